#ifndef TOOL_VERIFY_RECORDS_REFERENCE_RESOLVER_H
#define TOOL_VERIFY_RECORDS_REFERENCE_RESOLVER_H

#include <cstdint>
#include <string>

#include "tool/packet/import_configuration.h"
#include "tool/verify/records/record_lookup.h"

namespace tool {

// The record that a value of a source points at.
struct ExpectedTarget {
    std::int64_t dbid = 0;  // 0: there is not one record that it could be
    std::string text;       // what the source says
    std::string problem;    // why there is none, for people; empty otherwise
};

// Finds out which record a reference in a source points at, by the mapping that is in force or by
// unique key.
class ReferenceResolver {
  public:
    // The look-up outlives the object.
    explicit ReferenceResolver(RecordLookup& lookup) : m_lookup(lookup) {}

    // `value`, not empty, stands in a packet under the name `packetName` for a reference or
    // reference list. Throws sql::Error.
    ExpectedTarget Resolve(const recorddb::schema::Field& field, const std::string& packetName,
                           const std::string& value, const ImportConfiguration& configuration);

    // The record of `type` that has `value` as its original id.
    ExpectedTarget ResolveOriginal(const recorddb::schema::RecordType& type,
                                   const std::string& value,
                                   const ImportConfiguration& configuration);

  private:
    ExpectedTarget FindBy(const recorddb::schema::RecordType& type, const std::string& fieldName,
                          const std::string& value);
    ExpectedTarget FindKey(const recorddb::schema::RecordType& type, const std::string& key);
    ExpectedTarget FindByNumberedKey(const recorddb::schema::RecordType& type,
                                     const std::string& fieldName, const std::string& value);

    RecordLookup& m_lookup;
};

}  // namespace tool

#endif
