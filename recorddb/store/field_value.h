#ifndef RECORDDB_STORE_FIELD_VALUE_H
#define RECORDDB_STORE_FIELD_VALUE_H

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "recorddb/sql/statement.h"

namespace recorddb {

// The dbids of the records that a reference list holds, in order; never empty as a value.
using ReferenceList = std::vector<std::int64_t>;

// What a field holds: nothing, an integer (the dbid, for a reference), a text in UTF-8 that is not
// empty (dates and times as 'YYYY-MM-DD HH:MM:SS', UTC), or a reference list.
using FieldValue = std::variant<std::monostate, std::int64_t, std::string, ReferenceList>;

inline bool HasValue(const FieldValue& value) {
    return value.index() != 0;
}

// Binds the value of a column. The value must outlive the execution.
inline void BindValue(sql::Statement& statement, int parameter, const FieldValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        statement.BindText(parameter, *text);
    } else if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        statement.BindInt(parameter, *number);
    } else {
        statement.BindNull(parameter);
    }
}

}  // namespace recorddb

#endif
