#include "recorddb/sql/row_writer.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "recorddb/sql/row_sql.h"

namespace recorddb::sql {

namespace {

using Kind = RowChange::Kind;

// "a = $FIRST, b = $FIRST+1", with what stands between them.
std::string Equations(std::span<const RowColumn> columns, std::size_t first,
                      std::string_view separator) {
    std::vector<std::string> equations;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        equations.push_back(fmt::format("{} = ${}", Quoted(columns[i].name), first + i));
    }
    return fmt::format("{}", fmt::join(equations, separator));
}

std::string InsertSql(const RowChange& change) {
    std::vector<std::string> parameters;
    for (std::size_t i = 0; i < change.columns.size(); ++i) {
        parameters.push_back(fmt::format("${}", i + 1));
    }
    return fmt::format("INSERT INTO {} ({}) VALUES ({}){}", Quoted(change.table),
                       ColumnList(change.columns), fmt::join(parameters, ", "),
                       ConflictClause(change));
}

std::string SqlOf(const RowChange& change) {
    const std::string table = Quoted(change.table);
    const std::string rowMeant = Equations(change.columns.first(change.keys), 1, " AND ");
    switch (change.kind) {
        case Kind::Insert:
        case Kind::InsertOrUpdate:
            return InsertSql(change);
        case Kind::Update:
            return fmt::format(
                "UPDATE {} SET {} WHERE {}", table,
                Equations(change.columns.subspan(change.keys), change.keys + 1, ", "), rowMeant);
        case Kind::Delete:
            break;
    }
    return fmt::format("DELETE FROM {} WHERE {}", table, rowMeant);
}

class StatementRowWriter final : public RowWriter {
  public:
    explicit StatementRowWriter(Connection& connection) : m_connection(connection) {}

    void Write(const RowChange& change) override {
        const std::string sql = SqlOf(change);
        Statement& statement = m_connection.Prepare(sql);
        const std::size_t width = change.columns.size();
        for (std::size_t first = 0; first < change.cells.size(); first += width) {
            int parameter = 0;
            for (const Cell& cell : change.cells.subspan(first, width)) {
                BindCell(statement, ++parameter, cell);
            }
            if (statement.Execute() != 1) {
                throw RowsChanged(change.table, sql);
            }
        }
    }

    void Finish() override {}

  private:
    Connection& m_connection;
};

}  // namespace

void BindCell(Statement& statement, int parameter, const Cell& cell) {
    if (const auto* const text = std::get_if<std::string_view>(&cell)) {
        statement.BindText(parameter, *text);
    } else if (const auto* const number = std::get_if<std::int64_t>(&cell)) {
        statement.BindInt(parameter, *number);
    }
    // Parameters are NULL from the start.
}

std::unique_ptr<RowWriter> MakeStatementRowWriter(Connection& connection) {
    return std::make_unique<StatementRowWriter>(connection);
}

}  // namespace recorddb::sql
