#ifndef RECORDDB_STORE_BATCH_KEY_ROW_H
#define RECORDDB_STORE_BATCH_KEY_ROW_H

#include <optional>
#include <string>
#include <vector>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/store/batch/key_sets.h"

namespace recorddb {

// What zt_key says of a record's values in one of UniqueSetsOf(type), apart from whose they are.
struct KeyRow {
    std::string hash;   // SHA-256 of `value`, in lower-case hex
    std::string field;  // the names of the fields, separated by commas
    std::string value;  // the value, or where there are several, each behind its length: "3:abc"
};

// The row for values of a set of fields, in order; nothing when one of them is no value, since such
// a record may have any number of twins.
std::optional<KeyRow> KeyRowOf(const schema::RecordType& type, const FieldSet& fields,
                               const std::vector<const FieldValue*>& values);

}  // namespace recorddb

#endif
