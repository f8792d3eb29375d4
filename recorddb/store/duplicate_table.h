#ifndef RECORDDB_STORE_DUPLICATE_TABLE_H
#define RECORDDB_STORE_DUPLICATE_TABLE_H

#include <cstdint>
#include <optional>
#include <vector>

#include "recorddb/sql.h"
#include "recorddb/store/batch/write_batch.h"

namespace recorddb {

// The table of duplicate links, between records of one type. A record has one original at most; an
// original may have any number of duplicates and be a duplicate itself. Every operation throws
// sql::Error.
class DuplicateTable {
  public:
    // The batch outlives the object.
    explicit DuplicateTable(WriteBatch& batch)
        : m_batch(batch), m_connection(batch.GetConnection()) {}

    // Which record a record is a duplicate of; nothing when it is none.
    std::optional<std::int64_t> OriginalOf(std::int64_t recordType, std::int64_t record);

    // The records that are duplicates of a record, in ascending order.
    std::vector<std::int64_t> DuplicatesOf(std::int64_t recordType, std::int64_t record);

    // True when a record is the other one, or a duplicate of it by any number of steps.
    bool LeadsTo(std::int64_t recordType, std::int64_t record, std::int64_t other);

    // Makes a record a duplicate of an original, which takes the place of the one before, if any.
    void Link(std::int64_t recordType, std::int64_t duplicate, std::int64_t original);

  private:
    WriteBatch& m_batch;
    sql::Connection& m_connection;
};

}  // namespace recorddb

#endif
