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
    // Which of the statements the engine may refuse, for a constraint that they break, while the
    // transaction around them goes on.
    enum class Refusable {
        None,  // only the database itself can fail, and with it the transaction
        // The first one. Also a later one, if the writer itself undoes those before it (see
        // UndoesAll).
        First,
        Any
    };

    AtomicWrite(sql::Connection& connection, Refusable refusable) {
        const bool engineUndoes =
            refusable == Refusable::First && connection.TransactionSurvivesErrors();
        if (!connection.InTransaction()) {
            m_transaction.emplace(connection);
        } else if (refusable != Refusable::None && !engineUndoes) {
            m_savepoint.emplace(connection);
        }
    }

    // True when all that is not kept is undone; otherwise only the statement that was refused is.
    bool UndoesAll() const { return m_transaction || m_savepoint; }

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
