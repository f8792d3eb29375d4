#ifndef RECORDDB_SESSION_SESSION_TRANSACTION_H
#define RECORDDB_SESSION_SESSION_TRANSACTION_H

#include <cstddef>
#include <memory>

#include "platform/core/adptr.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/sql/savepoint.h"
#include "recorddb/sql/transaction.h"

namespace recorddb {

// What a session has in memory and must go back to when work is undone.
struct SessionState {
    Statistics statistics;
    std::size_t pendingHistory = 0;
};

// A part of a session's transaction that can be undone by itself, such as the work on one record.
// The destructor undoes one that is still open. Made by SessionTransaction::Savepoint; savepoints
// nest.
class SessionSavepoint {
  public:
    explicit SessionSavepoint(AdPtr<SessionParts> parts);
    SessionSavepoint(const SessionSavepoint&) = delete;
    SessionSavepoint& operator=(const SessionSavepoint&) = delete;
    ~SessionSavepoint();

    // Keeps the work, as part of what is around. Throws sql::Error.
    void Release();

    // Undoes the work, and takes it off the statistics. Records that were opened meanwhile should
    // be let go of: committing one again is refused when what it was based on is undone. Nothing
    // happens when the savepoint has ended already.
    void Rollback() noexcept;

  private:
    AdPtr<SessionParts> m_parts;
    SessionState m_before;
    sql::Savepoint m_savepoint;
    bool m_open = true;
};

// A transaction around many commits of a session, from construction to Commit or Rollback; the
// destructor rolls back one that is still open. Made by Session::BeginTransaction.
class SessionTransaction {
  public:
    explicit SessionTransaction(AdPtr<SessionParts> parts);
    SessionTransaction(const SessionTransaction&) = delete;
    SessionTransaction& operator=(const SessionTransaction&) = delete;
    ~SessionTransaction();

    // Makes the work permanent. Throws sql::Error, after which everything is undone; the session
    // remembers the failure.
    void Commit();

    // Undoes the work, and takes it off the statistics. Nothing happens when the transaction has
    // ended already.
    void Rollback() noexcept;

    // Begins a savepoint. Throws sql::Error.
    std::unique_ptr<SessionSavepoint> Savepoint();

  private:
    AdPtr<SessionParts> m_parts;
    SessionState m_before;
    sql::Transaction m_transaction;
};

}  // namespace recorddb

#endif
