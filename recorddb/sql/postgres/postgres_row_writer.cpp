#include "recorddb/sql/postgres/postgres_row_writer.h"

#include <fmt/format.h>

#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql/row_sql.h"

namespace recorddb::sql {

namespace {

using Kind = RowChange::Kind;

// A message to the server has a limit. Rows that come to more than this are sent in several.
constexpr std::size_t kLargestMessage = std::size_t{8} << 20U;

// "a SEPARATOR b", of "column = value" for some columns, of which `first` is the first.
std::string NewValueEquations(std::span<const RowColumn> columns, std::size_t first,
                              std::string_view prefix, std::string_view separator) {
    std::vector<std::string> equations;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        equations.push_back(
            fmt::format("{}{} = zt_new.v{}", prefix, Quoted(columns[i].name), first + i));
    }
    return fmt::format("{}", fmt::join(equations, separator));
}

std::string ArraySqlOf(const RowChange& change) {
    const std::string table = Quoted(change.table);
    const std::string rows = UnnestedSql(change.columns, Numbered::No);
    const std::string rowMeant =
        NewValueEquations(change.columns.first(change.keys), 1, "zt_row.", " AND ");
    switch (change.kind) {
        case Kind::Insert:
        case Kind::InsertOrUpdate:
            return fmt::format("INSERT INTO {} ({}) SELECT * FROM {}{}", table,
                               ColumnList(change.columns), rows, ConflictClause(change));
        case Kind::Update:
            return fmt::format(
                "UPDATE {} AS zt_row SET {} FROM {} WHERE {}", table,
                NewValueEquations(change.columns.subspan(change.keys), change.keys + 1, "", ", "),
                rows, rowMeant);
        case Kind::Delete:
            break;
    }
    return fmt::format("DELETE FROM {} AS zt_row USING {} WHERE {}", table, rows, rowMeant);
}

}  // namespace

void PostgresRowWriter::Write(const RowChange& change) {
    const std::string sql = ArraySqlOf(change);
    const std::size_t width = change.columns.size();
    ArrayParameters arrays(change.columns);
    std::size_t size = 0;
    std::int64_t rows = 0;
    for (std::size_t first = 0; first < change.cells.size(); first += width) {
        size += arrays.AddRows(change.cells.subspan(first, width));
        ++rows;
        if (size >= kLargestMessage || first + width == change.cells.size()) {
            Send({sql, std::string(change.table), rows}, arrays);
            arrays.Clear();
            size = 0;
            rows = 0;
        }
    }
}

void PostgresRowWriter::Send(Sent sent, ArrayParameters& arrays) {
    // Preparing is a question of its own, which comes before those of the pipeline.
    if (!m_statements.Has(sent.sql)) {
        Finish();
    }
    m_pipeline.Send(m_statements.NameOf(sent.sql), arrays.Values(), sent.sql);
    m_sent.push_back(std::move(sent));
}

void PostgresRowWriter::Finish() {
    const std::vector<Sent> sent = std::exchange(m_sent, {});
    const std::vector<PostgresResult> answers = m_pipeline.Finish();
    for (std::size_t i = 0; i < answers.size(); ++i) {
        if (answers[i].AffectedRows() != sent[i].rows) {
            throw RowsChanged(sent[i].table, sent[i].sql);
        }
    }
}

}  // namespace recorddb::sql
