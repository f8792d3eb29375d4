#ifndef RECORDDB_SQL_ROW_SQL_H
#define RECORDDB_SQL_ROW_SQL_H

#include <span>
#include <string>
#include <string_view>

#include "recorddb/errors.h"
#include "recorddb/sql/row_writer.h"

namespace recorddb::sql {

// What writers of rows have in common.

// The columns' names in quotes, separated by commas.
std::string ColumnList(std::span<const RowColumn> columns);

// What stands behind an INSERT: nothing for Insert; for InsertOrUpdate, what is done with a row
// that is there already.
std::string ConflictClause(const RowChange& change);

// The error of a change that did not reach each of its rows once.
Error RowsChanged(std::string_view table, const std::string& sql);

}  // namespace recorddb::sql

#endif
