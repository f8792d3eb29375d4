#include <stdexcept>

#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/sql/row_reader.h"
#include "recorddb/sql/row_writer.h"

namespace recorddb::sql {

std::unique_ptr<RowWriter> Connection::MakeRowWriter() {
    return MakeStatementRowWriter(*this);
}

std::unique_ptr<RowReader> Connection::MakeRowReader() {
    return MakeStatementRowReader(*this);
}

void Connection::Reconnect(std::chrono::milliseconds /*patience*/) {
    throw std::logic_error("a connection that cannot be lost is made anew");
}

void Connection::ExpectSpreadTables(std::string_view /*takeTurn*/) {
    throw Error(ErrorKind::Unsupported,
                "the sharded layout is for databases on servers; a file has the plain one", "");
}

void Connection::BeginTransaction(Access access) {
    if (m_inTransaction) {
        throw std::logic_error("a transaction is open already; nest with a Savepoint");
    }
    m_isReading = access == Access::Reading || IsReadOnly();
    Run(m_isReading && !IsReadOnly() ? Control::BeginReading : Control::Begin);
    m_inTransaction = true;
    m_undoFailed = false;
    m_savepointDepth = 0;
    ++m_transactionCount;
}

void Connection::CommitTransaction() {
    if (m_savepointDepth != 0) {
        throw std::logic_error("commit while a savepoint is open");
    }
    if (m_undoFailed) {
        throw Error(ErrorKind::Other, "a part of the transaction could not be undone", "COMMIT");
    }
    Run(Control::Commit);
    m_inTransaction = false;
}

void Connection::RollbackTransaction() noexcept {
    m_inTransaction = false;
    m_savepointDepth = 0;
    ++m_rollbackCount;
    try {
        if (EngineInTransaction()) {
            Run(Control::Rollback);
        }
    } catch (...) {
        // Nothing can be done about it here, and nothing is lost: what was not committed is undone
        // when the database is next opened, and a Begin before that fails visibly.
    }
}

int Connection::BeginSavepoint() {
    if (!m_inTransaction) {
        throw std::logic_error("a savepoint needs a transaction around it");
    }
    Run(Control::BeginSavepoint);
    return ++m_savepointDepth;
}

void Connection::ReleaseSavepoint(int depth) {
    if (depth != m_savepointDepth) {
        throw std::logic_error("only the innermost savepoint can be released");
    }
    Run(Control::ReleaseSavepoint);
    --m_savepointDepth;
}

void Connection::RollbackSavepoint(int depth) noexcept {
    // A transaction that has ended meanwhile took its savepoints with it.
    if (!m_inTransaction || depth > m_savepointDepth) {
        return;
    }
    ++m_rollbackCount;
    try {
        if (EngineInTransaction()) {
            for (; m_savepointDepth >= depth; --m_savepointDepth) {
                Run(Control::RollbackToSavepoint);
                Run(Control::ReleaseSavepoint);
            }
        }
    } catch (...) {
        // The engine has lost the savepoint, or has no memory for undoing it now. What should be
        // undone must not be made permanent.
        m_undoFailed = true;
    }
    m_savepointDepth = depth - 1;
}

}  // namespace recorddb::sql
