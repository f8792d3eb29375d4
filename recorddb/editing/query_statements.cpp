#include "recorddb/editing/query_statements.h"

#include <fmt/format.h>

#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using sql::Quoted;

void AppendNumber(std::string& shape, std::size_t number) {
    shape += static_cast<char>(number & 0xFFU);
    shape += static_cast<char>(number >> 8U);
}

// The shape in a few bytes: building the SQL text for every look-up would cost as much as running
// it.
std::string ShapeOf(const QueryDef& query, QueryStatements::Place place) {
    constexpr std::size_t none = 0xFFFF;
    std::string shape(1, place == QueryStatements::Place::Known ? 'k' : 'u');
    AppendNumber(shape, static_cast<std::size_t>(query.Type().id));
    for (const schema::Field* const column : query.Columns()) {
        AppendNumber(shape, column != nullptr ? column->index : none);
    }
    for (const FilterNode& filter : query.Filters()) {
        shape += filter.Value().empty() ? 'n' : 'v';
        AppendNumber(shape, filter.Field().index);
    }
    return shape;
}

std::string SqlOf(const QueryDef& query, QueryStatements::Place place) {
    std::vector<std::string> columns;
    for (const schema::Field* const column : query.Columns()) {
        columns.push_back(column != nullptr ? Quoted(column->name) : "NULL");
    }
    if (columns.empty()) {
        columns.emplace_back("NULL");
    }
    std::vector<std::string> conditions;
    int parameter = 0;
    for (const FilterNode& filter : query.Filters()) {
        const std::string column = Quoted(filter.Field().name);
        conditions.push_back(filter.Value().empty() ? column + " IS NULL"
                                                    : fmt::format("{} = ${}", column, ++parameter));
    }
    if (place == QueryStatements::Place::Known) {
        conditions.push_back(fmt::format("{} = ${}", schema::kDbIdName, ++parameter));
    }
    return fmt::format("SELECT {0}, {4} FROM {1}{2}{3} ORDER BY {4} LIMIT ${5}",
                       fmt::join(columns, ", "), Quoted(query.Type().name),
                       conditions.empty() ? "" : " WHERE ", fmt::join(conditions, " AND "),
                       schema::kDbIdName, parameter + 1);
}

}  // namespace

sql::Statement& QueryStatements::For(const QueryDef& query, Place place) {
    sql::Statement*& statement = m_statements[ShapeOf(query, place)];
    if (statement == nullptr) {
        statement = &m_connection.Prepare(SqlOf(query, place));
    }
    return *statement;
}

}  // namespace recorddb
