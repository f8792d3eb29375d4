#ifndef RECORDDB_STORE_RECORD_IDS_H
#define RECORDDB_STORE_RECORD_IDS_H

#include <cstdint>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/sql.h"

namespace recorddb::schema {

// Gives new records their dbid, which is the number in the display id as well: one counter serves
// both, needs no row of its own to be written with every record, and is unique because the dbid is
// the table's primary key. The highest dbid is read once in a transaction and counted on in memory.
class RecordIds {
  public:
    // Connection and schema outlive the object.
    RecordIds(sql::Connection& connection, const Schema& schema);

    // The dbid for the next record of a type, above all that are in use; the caller inserts the
    // record with it in the transaction under way. Throws std::logic_error outside of a
    // transaction, where another writer could take the same number, and sql::Error. When a record
    // has the highest number that there is, the message that says so, as a PaMsgException*.
    std::int64_t Next(const RecordType& type);

  private:
    struct Counter {
        std::int64_t last = 0;
        // The state of the connection in which `last` was right.
        std::uint64_t transactionCount = 0;
        std::uint64_t rollbackCount = 0;
        sql::Statement* highest = nullptr;
    };

    void Read(const RecordType& type, Counter& counter);

    sql::Connection& m_connection;
    std::vector<Counter> m_counters;  // by type
};

}  // namespace recorddb::schema

#endif
