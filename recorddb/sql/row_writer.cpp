#include "recorddb/sql/row_writer.h"

#include <fmt/format.h>

#include <algorithm>
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

// "($1, $2), ($3, $4)"
std::string ValuesOfRows(std::size_t rows, std::size_t width) {
    std::string values;
    std::size_t parameter = 0;
    for (std::size_t row = 0; row < rows; ++row) {
        values += row == 0 ? "(" : ", (";
        for (std::size_t column = 0; column < width; ++column) {
            values += column == 0 ? "$" : ", $";
            values += std::to_string(++parameter);
        }
        values += ')';
    }
    return values;
}

std::string InsertSql(const RowChange& change, std::size_t rows) {
    return fmt::format("INSERT INTO {} ({}) VALUES {}{}", Quoted(change.table),
                       ColumnList(change.columns), ValuesOfRows(rows, change.columns.size()),
                       ConflictClause(change));
}

// "a = CASE WHEN a < $FIRST THEN $FIRST ELSE a END"
std::string Raises(std::span<const RowColumn> columns, std::size_t first) {
    std::vector<std::string> raises;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        raises.push_back(fmt::format("{0} = CASE WHEN {0} < ${1} THEN ${1} ELSE {0} END",
                                     Quoted(columns[i].name), first + i));
    }
    return fmt::format("{}", fmt::join(raises, ", "));
}

// Rows that one statement writes, where it can write several. Between them the engine stays in its
// place in the table and in its indexes, which saves half of what a row costs.
std::size_t RowsOfStatement(const RowChange& change) {
    constexpr std::size_t mostRows = 16;
    constexpr std::size_t mostParameters = 512;
    return change.kind == Kind::Insert
               ? std::clamp<std::size_t>(mostParameters / change.columns.size(), 1, mostRows)
               : 1;
}

// `rows` is 1 but for an Insert.
std::string SqlOf(const RowChange& change, std::size_t rows) {
    const std::string table = Quoted(change.table);
    const std::string rowMeant = Equations(change.columns.first(change.keys), 1, " AND ");
    switch (change.kind) {
        case Kind::Insert:
        case Kind::InsertOrUpdate:
            return InsertSql(change, rows);
        case Kind::Update:
            return fmt::format(
                "UPDATE {} SET {} WHERE {}", table,
                Equations(change.columns.subspan(change.keys), change.keys + 1, ", "), rowMeant);
        case Kind::Raise:
            return fmt::format("UPDATE {} SET {} WHERE {}", table,
                               Raises(change.columns.subspan(change.keys), change.keys + 1),
                               rowMeant);
        case Kind::Delete:
            break;
    }
    return fmt::format("DELETE FROM {} WHERE {}", table, rowMeant);
}

class StatementRowWriter final : public RowWriter {
  public:
    explicit StatementRowWriter(Connection& connection) : m_connection(connection) {}

    void Write(const RowChange& change) override {
        const std::size_t rows = RowsOfStatement(change);
        const std::size_t rest = change.cells.size() % (rows * change.columns.size());
        WriteRows(change, rows, change.cells.first(change.cells.size() - rest));
        WriteRows(change, 1, change.cells.last(rest));
    }

    void Finish() override {}

  private:
    // Writes `cells` with so many rows a statement.
    void WriteRows(const RowChange& change, std::size_t rows, std::span<const Cell> cells) {
        if (cells.empty()) {
            return;
        }
        const std::string sql = SqlOf(change, rows);
        Statement& statement = m_connection.Prepare(sql);
        const std::size_t size = rows * change.columns.size();
        for (std::size_t first = 0; first < cells.size(); first += size) {
            int parameter = 0;
            for (const Cell& cell : cells.subspan(first, size)) {
                BindCell(statement, ++parameter, cell);
            }
            if (statement.Execute() != static_cast<std::int64_t>(rows)) {
                throw RowsChanged(change.table, sql);
            }
        }
    }

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
