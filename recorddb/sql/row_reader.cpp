#include "recorddb/sql/row_reader.h"

#include <fmt/format.h>

#include <string>
#include <vector>

namespace recorddb::sql {

namespace {

std::string SqlOf(const RowQuestion& question) {
    std::vector<std::string> columns;
    for (const RowColumn& column : question.columns) {
        columns.push_back(Quoted(column.name));
    }
    std::vector<std::string> conditions;
    for (const RowColumn& key : question.keys) {
        conditions.push_back(fmt::format("{} = ${}", Quoted(key.name), conditions.size() + 1));
    }
    return fmt::format("SELECT {} FROM {} WHERE {} ORDER BY {}{}", fmt::join(columns, ", "),
                       Quoted(question.table), fmt::join(conditions, " AND "),
                       Quoted(question.order),
                       question.most != 0 ? fmt::format(" LIMIT {}", question.most) : "");
}

Cell CellAt(const Statement& row, int column, CellType type) {
    if (row.IsNull(column)) {
        return {};
    }
    return type == CellType::Integer ? Cell(row.Int(column)) : Cell(row.Text(column));
}

class StatementRowReader final : public RowReader {
  public:
    explicit StatementRowReader(Connection& connection) : m_connection(connection) {}

    void Ask(const RowQuestion& question, Take take) override {
        Statement& statement = m_connection.Prepare(SqlOf(question));
        const ResetGuard guard(statement);
        const std::size_t width = question.keys.size();
        std::vector<Cell> row(question.columns.size());
        for (std::size_t key = 0; key * width < question.cells.size(); ++key) {
            int parameter = 0;
            for (const Cell& cell : question.cells.subspan(key * width, width)) {
                BindCell(statement, ++parameter, cell);
            }
            while (statement.Step()) {
                for (std::size_t column = 0; column < row.size(); ++column) {
                    row[column] =
                        CellAt(statement, static_cast<int>(column), question.columns[column].type);
                }
                take(key, row);
            }
        }
    }

    void Finish() override {}

  private:
    Connection& m_connection;
};

}  // namespace

std::unique_ptr<RowReader> MakeStatementRowReader(Connection& connection) {
    return std::make_unique<StatementRowReader>(connection);
}

}  // namespace recorddb::sql
