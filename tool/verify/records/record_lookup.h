#ifndef TOOL_VERIFY_RECORDS_RECORD_LOOKUP_H
#define TOOL_VERIFY_RECORDS_RECORD_LOOKUP_H

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/keys.h"
#include "recorddb/reader.h"
#include "recorddb/sql.h"

namespace tool {

// Finds records by what sources know them by, in a database that is only read. Where a field that
// is searched has no index, its values are copied once into the scratch database and searched
// there, since a scan for each record would never end. Every operation throws sql::Error, and
// std::runtime_error when the scratch database fails.
class RecordLookup {
  public:
    // All of them outlive the object; keys are searched within the limits.
    RecordLookup(recorddb::Database& database, recorddb::RecordReader& reader,
                 recorddb::sql::Connection& scratch, recorddb::KeySearchLimits limits);

    // The dbids of the records of a type with that value, as a source writes it, in a field: none,
    // one, or two of several. A field that is no column is no record's.
    std::vector<std::int64_t> Find(const recorddb::schema::RecordType& type,
                                   const recorddb::schema::Field& field, std::string_view value);

    // The record of a type with that unique key.
    recorddb::KeyMatch FindKey(const recorddb::schema::RecordType& type, std::string_view key);

    const recorddb::schema::Schema& GetSchema() const { return m_database.GetSchema(); }

  private:
    std::vector<std::int64_t> FindCopied(const recorddb::schema::RecordType& type,
                                         const recorddb::schema::Field& field,
                                         const std::string& stored);
    void Copy(const recorddb::schema::RecordType& type, const recorddb::schema::Field& field);

    recorddb::Database& m_database;
    recorddb::RecordReader& m_reader;
    recorddb::sql::Connection& m_scratch;
    recorddb::KeySearchLimits m_limits;
    std::set<std::pair<std::int64_t, std::size_t>> m_copied;  // type and field
};

}  // namespace tool

#endif
