#include "recorddb/sql/postgres/postgres_row_reader.h"

#include <fmt/format.h>

#include <string>
#include <utility>

namespace recorddb::sql {

namespace {

// The number of a key, from 1, and the columns of a row that it finds. Without a query of its own
// for each key, which is not to be had over machines, a plan that is kept could read all of a
// table; so this is for statements whose plans are made anew.
std::string JoinSql(const RowQuestion& question) {
    std::string columns;
    for (const RowColumn& column : question.columns) {
        columns += fmt::format(", zt_row.{}", Quoted(column.name));
    }
    return fmt::format(
        "SELECT zt_new.n{} FROM {} JOIN {} AS zt_row ON {} "
        "ORDER BY zt_new.n, zt_row.{}",
        columns, UnnestedSql(question.keys, Numbered::Yes), Quoted(question.table),
        JoinedBy(question.keys, Standing::SpreadOverMachines), Quoted(question.order));
}

// The same, with a query for each key.
std::string KeysSql(const RowQuestion& question) {
    std::vector<std::string> columns;
    for (const RowColumn& column : question.columns) {
        columns.push_back(fmt::format("zt_row.{} AS c{}", Quoted(column.name), columns.size() + 1));
    }
    return fmt::format(
        "SELECT zt_new.n, zt_found.* FROM {} CROSS JOIN LATERAL (SELECT {}, zt_row.{} AS zt_order "
        "FROM {} AS zt_row WHERE {} ORDER BY zt_order{}) AS zt_found "
        "ORDER BY zt_new.n, zt_found.zt_order",
        UnnestedSql(question.keys, Numbered::Yes), fmt::join(columns, ", "), Quoted(question.order),
        Quoted(question.table), JoinedBy(question.keys, Standing::OnOneServer),
        question.most != 0 ? fmt::format(" LIMIT {}", question.most) : "");
}

Cell FoundCell(const PostgresResult& rows, int row, int column, CellType type) {
    if (rows.IsNull(row, column)) {
        return {};
    }
    return type == CellType::Integer ? Cell(rows.Int(row, column)) : Cell(rows.Text(row, column));
}

}  // namespace

void PostgresRowReader::Ask(const RowQuestion& question, Take take) {
    ArrayParameters arrays(question.keys);
    arrays.AddRows(question.cells);
    // A limit for each key takes a query for each; such questions are about tables that stand on
    // every machine.
    const bool joins =
        m_statements.GetStanding() == Standing::SpreadOverMachines && question.most == 0;
    const std::string sql = joins ? JoinSql(question) : KeysSql(question);
    // Preparing is a question of its own, which comes before those of the pipeline.
    if (!m_statements.Has(sql)) {
        Finish();
    }
    m_pipeline.Send(m_statements.NameOf(sql), arrays.Values(), sql);
    Asked& asked = m_asked.emplace_back();
    asked.take = std::move(take);
    for (const RowColumn& column : question.columns) {
        asked.types.push_back(column.type);
    }
}

void PostgresRowReader::Finish() {
    const std::vector<Asked> questions = std::exchange(m_asked, {});
    const std::vector<PostgresResult> answers = m_pipeline.Finish();
    for (std::size_t i = 0; i < answers.size(); ++i) {
        const Asked& asked = questions[i];
        std::vector<Cell> cells(asked.types.size());
        for (int row = 0; row < answers[i].RowCount(); ++row) {
            for (std::size_t column = 0; column < cells.size(); ++column) {
                cells[column] =
                    FoundCell(answers[i], row, static_cast<int>(column) + 1, asked.types[column]);
            }
            asked.take(static_cast<std::size_t>(answers[i].Int(row, 0)) - 1, cells);
        }
    }
}

}  // namespace recorddb::sql
