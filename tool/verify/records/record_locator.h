#ifndef TOOL_VERIFY_RECORDS_RECORD_LOCATOR_H
#define TOOL_VERIFY_RECORDS_RECORD_LOCATOR_H

#include <cstdint>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/packet/import_configuration.h"
#include "tool/verify/records/kept_record.h"
#include "tool/verify/records/record_lookup.h"

namespace tool {

// Where a record of a source is in the database.
struct LocatedRecord {
    std::int64_t dbid = 0;  // 0: there is not one record that it could be
    std::string problem;    // why there is none, for people; empty otherwise
};

// Finds the one record of the database that a record of a source speaks of: by its original id or,
// when it has none and its type no states, by its unique key.
class RecordLocator {
  public:
    // The look-up outlives the object.
    explicit RecordLocator(RecordLookup& lookup) : m_lookup(lookup) {}

    // `record` has the original id and the fields of a record of `type`, to be imported under
    // `configuration`. Throws sql::Error.
    LocatedRecord Locate(const KeptRecord& record, const ImportConfiguration& configuration,
                         const recorddb::schema::RecordType& type);

  private:
    LocatedRecord LocateById(const std::string& id, const std::string& fieldName,
                             const recorddb::schema::RecordType& type);
    LocatedRecord LocateByKey(const std::vector<KeptField>& fields,
                              const recorddb::schema::RecordType& type);

    RecordLookup& m_lookup;
};

}  // namespace tool

#endif
