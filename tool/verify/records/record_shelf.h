#ifndef TOOL_VERIFY_RECORDS_RECORD_SHELF_H
#define TOOL_VERIFY_RECORDS_RECORD_SHELF_H

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "recorddb/sql.h"
#include "tool/verify/records/kept_record.h"

namespace tool {

// Keeps any number of records in the order in which they come, and gives them back sorted by the
// record of the database that they speak of; those of one record in the order in which they came.
// Takes the memory of one record. Every operation throws std::runtime_error when the scratch
// database fails.
class RecordShelf {
  public:
    // `scratch`, an empty database, outlives the object.
    explicit RecordShelf(recorddb::sql::Connection& scratch);

    void Add(const KeptRecord& record);

    std::uint64_t Count() const { return m_count; }

    // The next record; false after the last. Nothing can be added after the first call.
    bool Next(KeptRecord& record);

    // The bytes that the latest one took.
    std::size_t Size() const { return m_size; }

  private:
    recorddb::sql::Connection& m_scratch;
    recorddb::sql::Statement* m_insert = nullptr;
    recorddb::sql::Statement* m_select = nullptr;
    std::uint64_t m_count = 0;
    std::size_t m_size = 0;
    std::string m_buffer;
};

}  // namespace tool

#endif
