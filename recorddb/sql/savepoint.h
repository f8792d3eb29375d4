#ifndef RECORDDB_SQL_SAVEPOINT_H
#define RECORDDB_SQL_SAVEPOINT_H

#include "recorddb/sql.h"

namespace recorddb::sql {

// A part of a transaction that can be undone by itself; savepoints nest. The destructor undoes one
// that is still open.
class Savepoint {
  public:
    // Throws Error when the engine refuses, std::logic_error outside of a transaction.
    explicit Savepoint(Connection& connection);
    Savepoint(const Savepoint&) = delete;
    Savepoint& operator=(const Savepoint&) = delete;
    ~Savepoint();

    // Keeps the work as part of the savepoint or transaction around it. Throws Error, or
    // std::logic_error when the savepoint has ended already or is not the innermost one.
    void Release();

    // Undoes the work, that of savepoints inside it included; nothing happens when the savepoint or
    // the transaction around it has ended already.
    void Rollback() noexcept;

  private:
    Connection* m_connection;
    int m_depth;
};

}  // namespace recorddb::sql

#endif
