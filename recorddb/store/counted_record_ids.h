#ifndef RECORDDB_STORE_COUNTED_RECORD_IDS_H
#define RECORDDB_STORE_COUNTED_RECORD_IDS_H

#include <cstdint>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/record_ids.h"

namespace recorddb::schema {

// Counts on from the highest dbid in the type's table: no row of its own needs to be written with
// every record, and the dbid is unique because it is the table's primary key. For engines with one
// writer at a time. The highest dbid is read once in a transaction and counted on in memory.
// What is gathered ahead of its turn gets provisional numbers.
class CountedRecordIds final : public RecordIds {
  public:
    // Batch and schema outlive the object.
    CountedRecordIds(WriteBatch& batch, const Schema& schema);

    // Throws sql::Error as well, and std::logic_error outside of a transaction, where another
    // writer could take the same number.
    std::int64_t Next(const RecordType& type) override;

    // The last dbid that was given out, or is in use; 0 when there is none. Otherwise as Next.
    std::int64_t Last(const RecordType& type);

    // Dbids up to this one were given to records in another way, in the transaction under way.
    void SetLast(const RecordType& type, std::int64_t last) { CounterOf(type).last = last; }

  private:
    struct Counter {
        std::int64_t last = 0;
        // The state of connection and batch in which `last` was right.
        std::uint64_t transactionCount = 0;
        std::uint64_t undoCount = 0;
    };

    Counter& CounterOf(const RecordType& type);
    std::int64_t Highest(const RecordType& type);
    void Read(const RecordType& type, Counter& counter);

    WriteBatch& m_batch;
    sql::Connection& m_connection;
    std::vector<Counter> m_counters;  // by type
};

}  // namespace recorddb::schema

#endif
