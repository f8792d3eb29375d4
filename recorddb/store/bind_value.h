#ifndef RECORDDB_STORE_BIND_VALUE_H
#define RECORDDB_STORE_BIND_VALUE_H

#include "recorddb/model/field_value.h"
#include "recorddb/sql.h"

namespace recorddb {

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
