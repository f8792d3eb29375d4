#ifndef RECORDDB_STORE_TABLES_COLUMN_TEXT_H
#define RECORDDB_STORE_TABLES_COLUMN_TEXT_H

#include <string>

#include "recorddb/model/field_value.h"

namespace recorddb {

// The text that an engine gives for a column with this value; empty for no value.
inline std::string ColumnText(const FieldValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return *text;
    }
    const auto* const number = std::get_if<std::int64_t>(&value);
    return number != nullptr ? std::to_string(*number) : std::string();
}

}  // namespace recorddb

#endif
