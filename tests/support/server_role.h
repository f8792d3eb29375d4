#ifndef TESTS_SUPPORT_SERVER_ROLE_H
#define TESTS_SUPPORT_SERVER_ROLE_H

#include <string>
#include <utility>

#include "engines.h"

// A role of the test server that may connect and do nothing else, until it is granted more.
class ServerRole {
  public:
    explicit ServerRole(std::string name) : m_name(std::move(name)) {}

    const std::string& Name() const { return m_name; }

    void Make() const { Server("CREATE ROLE " + m_name + " LOGIN"); }

    // With all that it owns and was granted, as far as that is not in a database of its own.
    void Drop() const { Server("DROP OWNED BY " + m_name + "; DROP ROLE " + m_name); }

    // Does something as the role that the tests work as, which may do everything.
    static void Server(const std::string& sql) { DatabasePlace::Server().ExecuteScript(sql); }

  private:
    std::string m_name;
};

#endif
