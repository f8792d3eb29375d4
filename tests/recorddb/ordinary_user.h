#ifndef TESTS_RECORDDB_ORDINARY_USER_H
#define TESTS_RECORDDB_ORDINARY_USER_H

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

// Lets the super-user, whom no permission stops, act as nobody.
class OrdinaryUser {
  public:
    OrdinaryUser() : m_before(geteuid()) {
        if (m_before == 0 && seteuid(65534) != 0) {
            throw std::runtime_error("cannot act as another user");
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() {
        if (seteuid(m_before) != 0) {
            std::abort();
        }
    }

  private:
    uid_t m_before;
};

#endif
