#ifndef RECORDDB_SQL_CONNECTION_H
#define RECORDDB_SQL_CONNECTION_H

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "recorddb/sql/dialect.h"
#include "recorddb/sql/statement.h"

namespace recorddb::sql {

// One connection to an SQL engine, for one thread. Every operation throws Error when the engine
// refuses. Transactions are objects: see Transaction and Savepoint.
class Connection {
  public:
    Connection() = default;
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;
    virtual ~Connection() = default;

    // The statement with this text, prepared at the first call and kept. The reference stays valid
    // for the connection's life; hot paths keep it and save the look-up. All callers with the same
    // text share one statement, and with it its execution.
    virtual Statement& Prepare(std::string_view sql) = 0;

    // A statement of the caller's own, for executions that nest. It must not outlive the
    // connection.
    virtual std::unique_ptr<Statement> PrepareOwn(std::string_view sql) = 0;

    // Runs statements that are separated by semicolons and return no rows; nothing is kept. What
    // makes tables and indexes goes this way.
    virtual void ExecuteScript(std::string_view sql) = 0;

    // True for a table that holds its rows itself, as opposed to a view, a virtual table or one
    // with computed columns.
    virtual bool HasTable(std::string_view name) = 0;
    virtual bool HasIndex(std::string_view name) = 0;

    virtual const Dialect& GetDialect() const = 0;
    virtual bool IsReadOnly() const = 0;

    bool InTransaction() const { return m_inTransaction; }

    // Number of transactions begun so far. What was read inside a transaction may be trusted as
    // long as this number and RollbackCount stand still; after that another writer may have been
    // at work.
    std::uint64_t TransactionCount() const { return m_transactionCount; }

    // Number of roll-backs so far, those of savepoints included. What was written is there as long
    // as this number stands still.
    std::uint64_t RollbackCount() const { return m_rollbackCount; }

  protected:
    enum class Control {
        Begin,
        Commit,
        Rollback,
        BeginSavepoint,
        ReleaseSavepoint,
        RollbackToSavepoint
    };

    // Runs one transaction statement.
    virtual void Run(Control control) = 0;

    // True while the engine itself has a transaction open. An engine may roll back on its own, on a
    // full disk for instance.
    virtual bool EngineInTransaction() const = 0;

    // A number that grows with every row that is written and every script that is run.
    virtual std::uint64_t WriteCount() const = 0;

  private:
    friend class Transaction;
    friend class Savepoint;

    void BeginTransaction();
    void CommitTransaction();
    void RollbackTransaction() noexcept;
    int BeginSavepoint();
    void ReleaseSavepoint(int depth);
    void RollbackSavepoint(int depth) noexcept;

    bool m_inTransaction = false;
    bool m_undoFailed = false;  // a savepoint's work may still be in the transaction
    int m_savepointDepth = 0;
    std::vector<std::uint64_t> m_writesBefore;  // WriteCount at the beginning of each savepoint
    std::uint64_t m_transactionCount = 0;
    std::uint64_t m_rollbackCount = 0;
};

}  // namespace recorddb::sql

#endif
