#include "recorddb/sql/postgres/array_statements.h"

#include <fmt/format.h>

#include <utility>

namespace recorddb::sql {

namespace {

std::string ArrayOf(const RowColumn& column, std::size_t parameter) {
    return fmt::format("${}::{}[]", parameter,
                       column.type == CellType::Integer ? "bigint" : "text");
}

}  // namespace

std::string UnnestedSql(std::span<const RowColumn> columns, Numbered numbered) {
    std::vector<std::string> arrays;
    std::vector<std::string> names;
    for (const RowColumn& column : columns) {
        arrays.push_back(ArrayOf(column, arrays.size() + 1));
        names.push_back(fmt::format("v{}", names.size() + 1));
    }
    const bool hasNumbers = numbered == Numbered::Yes;
    return fmt::format("unnest({}){} AS zt_new({}{})", fmt::join(arrays, ", "),
                       hasNumbers ? " WITH ORDINALITY" : "", fmt::join(names, ", "),
                       hasNumbers ? ", n" : "");
}

std::string JoinedBy(std::span<const RowColumn> keys, Standing standing) {
    std::vector<std::string> conditions;
    for (const RowColumn& key : keys) {
        conditions.push_back(
            fmt::format("zt_row.{} = zt_new.v{}", Quoted(key.name), conditions.size() + 1));
    }
    if (standing == Standing::SpreadOverMachines) {
        for (std::size_t i = 0; i < keys.size(); ++i) {
            conditions.push_back(
                fmt::format("zt_row.{} = ANY ({})", Quoted(keys[i].name), ArrayOf(keys[i], i + 1)));
        }
    }
    return fmt::format("{}", fmt::join(conditions, " AND "));
}

ArrayParameters::ArrayParameters(std::span<const RowColumn> columns)
    : m_values(static_cast<int>(columns.size())) {
    for (const RowColumn& column : columns) {
        m_arrays.emplace_back(column.type);
    }
}

std::size_t ArrayParameters::AddRows(std::span<const Cell> cells) {
    std::size_t size = 0;
    std::size_t column = 0;
    for (const Cell& cell : cells) {
        size += m_arrays[column].Add(cell);
        column = column + 1 == m_arrays.size() ? 0 : column + 1;
    }
    return size;
}

const PostgresParameters& ArrayParameters::Values() {
    int parameter = 0;
    for (PostgresArray& array : m_arrays) {
        m_values.SetBlob(++parameter, array.Bytes());
    }
    return m_values;
}

void ArrayParameters::Clear() {
    for (PostgresArray& array : m_arrays) {
        array.Clear();
    }
}

const std::string& ArrayStatements::NameOf(const std::string& sql) {
    if (m_generation != m_handle.Generation()) {
        m_names.clear();
        m_generation = m_handle.Generation();
    }
    if (const auto found = m_names.find(sql); found != m_names.end()) {
        return found->second;
    }
    std::string name = m_handle.NewName();
    m_handle.Prepare(name, sql);
    return m_names.emplace(sql, std::move(name)).first->second;
}

}  // namespace recorddb::sql
