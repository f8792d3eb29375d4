#ifndef RECORDDB_SQL_TRANSACTION_H
#define RECORDDB_SQL_TRANSACTION_H

#include "recorddb/sql/connection.h"

namespace recorddb::sql {

// A transaction from construction to Commit or Rollback; the destructor rolls back one that is
// still open. One at a time on a connection; what nests is a Savepoint. On a read-write connection
// it holds the write lock from the start, so that a transaction that reads first and writes later
// never fails half-way because another writer came in between.
class Transaction {
  public:
    // Throws Error when the engine refuses, std::logic_error when a transaction is open already.
    explicit Transaction(Connection& connection);
    Transaction(Transaction&& other) noexcept;
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    Transaction& operator=(Transaction&&) = delete;
    ~Transaction();

    // Makes the work permanent. Throws Error when the engine refuses, after which the transaction
    // is still open and its destructor rolls it back; std::logic_error when it has ended already
    // or a savepoint is open.
    void Commit();

    // Undoes the work; nothing happens when the transaction has ended already.
    void Rollback() noexcept;

    bool IsOpen() const { return m_connection != nullptr; }

  private:
    Connection* m_connection;
};

}  // namespace recorddb::sql

#endif
