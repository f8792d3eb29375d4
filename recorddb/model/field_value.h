#ifndef RECORDDB_MODEL_FIELD_VALUE_H
#define RECORDDB_MODEL_FIELD_VALUE_H

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

namespace recorddb {

// The dbids of the records that a reference list holds, in order; never empty as a value.
using ReferenceList = std::vector<std::int64_t>;

// What a field holds: nothing, an integer (the dbid, for a reference), a text in UTF-8 that is not
// empty (dates and times as 'YYYY-MM-DD HH:MM:SS', UTC), or a reference list.
using FieldValue = std::variant<std::monostate, std::int64_t, std::string, ReferenceList>;

inline bool HasValue(const FieldValue& value) {
    return value.index() != 0;
}

}  // namespace recorddb

#endif
