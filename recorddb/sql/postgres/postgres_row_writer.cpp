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

// "column = value, ...", of which the first value is that of zt_new's column `first`.
std::string Assignments(std::span<const RowColumn> columns, std::size_t first, bool raise) {
    std::vector<std::string> assignments;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::string column = Quoted(columns[i].name);
        assignments.push_back(
            raise ? fmt::format("{0} = greatest(zt_row.{0}, zt_new.v{1})", column, first + i)
                  : fmt::format("{} = zt_new.v{}", column, first + i));
    }
    return fmt::format("{}", fmt::join(assignments, ", "));
}

std::string ArraySqlOf(const RowChange& change, Standing standing) {
    const std::string table = Quoted(change.table);
    const std::string rows = UnnestedSql(change.columns, Numbered::No);
    const std::string rowMeant = JoinedBy(change.columns.first(change.keys), standing);
    switch (change.kind) {
        case Kind::Insert:
        case Kind::InsertOrUpdate:
            return fmt::format("INSERT INTO {} ({}) SELECT * FROM {}{}", table,
                               ColumnList(change.columns), rows, ConflictClause(change));
        case Kind::Update:
        case Kind::Raise:
            return fmt::format("UPDATE {} AS zt_row SET {} FROM {} WHERE {}", table,
                               Assignments(change.columns.subspan(change.keys), change.keys + 1,
                                           change.kind == Kind::Raise),
                               rows, rowMeant);
        case Kind::Delete:
            break;
    }
    return fmt::format("DELETE FROM {} AS zt_row USING {} WHERE {}", table, rows, rowMeant);
}

}  // namespace

void PostgresRowWriter::Write(const RowChange& change) {
    const std::string sql = ArraySqlOf(change, m_statements.GetStanding());
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
