#ifndef RECORDDB_STORE_TABLES_CELLS_H
#define RECORDDB_STORE_TABLES_CELLS_H

#include <string>
#include <string_view>
#include <variant>

#include "recorddb/model/field_value.h"
#include "recorddb/schema.h"
#include "recorddb/sql/row_writer.h"

namespace recorddb {

// A field with a column, as that column.
inline sql::RowColumn ColumnOf(const schema::Field& field) {
    const bool isNumber = field.kind == schema::FieldKind::Integer ||
                          field.kind == schema::FieldKind::Reference ||
                          field.kind == schema::FieldKind::DbId;
    return {field.name, isNumber ? sql::CellType::Integer : sql::CellType::Text};
}

// The value of a field with a column, as a cell that borrows its text.
inline sql::Cell CellOf(const FieldValue& value) {
    if (const auto* const text = std::get_if<std::string>(&value)) {
        return std::string_view(*text);
    }
    if (const auto* const number = std::get_if<std::int64_t>(&value)) {
        return *number;
    }
    return {};
}

// What a cell holds, as the value of a field.
inline FieldValue ValueIn(const sql::Cell& cell) {
    if (const auto* const text = std::get_if<std::string_view>(&cell)) {
        return std::string(*text);
    }
    if (const auto* const number = std::get_if<std::int64_t>(&cell)) {
        return *number;
    }
    return {};
}

// True for a field with a column that is written with a record; the dbid is the row's own.
inline bool IsPlainColumn(const schema::Field& field) {
    return schema::HasColumn(field.kind) && field.kind != schema::FieldKind::DbId;
}

}  // namespace recorddb

#endif
