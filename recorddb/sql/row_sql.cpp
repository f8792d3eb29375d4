#include "recorddb/sql/row_sql.h"

#include <fmt/format.h>

#include <vector>

namespace recorddb::sql {

std::string ColumnList(std::span<const RowColumn> columns) {
    std::vector<std::string> names;
    for (const RowColumn& column : columns) {
        names.push_back(Quoted(column.name));
    }
    return fmt::format("{}", fmt::join(names, ", "));
}

std::string ConflictClause(const RowChange& change) {
    if (change.kind != RowChange::Kind::InsertOrUpdate) {
        return "";
    }
    std::vector<std::string> taken;
    for (const RowColumn& column : change.columns.subspan(change.keys)) {
        taken.push_back(fmt::format("{0} = excluded.{0}", Quoted(column.name)));
    }
    return fmt::format(" ON CONFLICT ({}) DO UPDATE SET {}",
                       ColumnList(change.columns.first(change.keys)), fmt::join(taken, ", "));
}

Error RowsChanged(std::string_view table, const std::string& sql) {
    return {ErrorKind::Conflict,
            fmt::format("another program has changed rows of the table \"{}\"", table), sql};
}

}  // namespace recorddb::sql
