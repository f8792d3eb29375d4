#ifndef RECORDDB_STORE_ATOMIC_WRITE_H
#define RECORDDB_STORE_ATOMIC_WRITE_H

#include <optional>

#include "recorddb/sql.h"
#include "recorddb/sql/savepoint.h"

namespace recorddb {

// Writes that are made together or not at all: a transaction of their own, or a savepoint where
// they are part of a larger one. What is not kept is undone by the destructor.
class AtomicWrite {
  public:
    // A single statement needs no savepoint, since the engine undoes what it did when it fails.
    enum class Extent { OneStatement, SeveralStatements };

    AtomicWrite(sql::Connection& connection, Extent extent) {
        if (!connection.InTransaction()) {
            m_transaction.emplace(connection);
        } else if (extent == Extent::SeveralStatements) {
            m_savepoint.emplace(connection);
        }
    }

    void Keep() {
        if (m_transaction) {
            m_transaction->Commit();
        }
        if (m_savepoint) {
            m_savepoint->Release();
        }
    }

  private:
    std::optional<sql::Transaction> m_transaction;
    std::optional<sql::Savepoint> m_savepoint;
};

}  // namespace recorddb

#endif
