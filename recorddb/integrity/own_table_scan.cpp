#include "recorddb/integrity/own_table_scan.h"

#include <fmt/format.h>

#include <array>
#include <limits>
#include <vector>

#include "recorddb/integrity/cell_rules.h"
#include "recorddb/store/tables/stored_schema.h"

namespace recorddb {

namespace {

struct OwnRow {
    CheckContext& context;
    const sql::Statement& row;
    std::string_view table;
    std::string id;

    void Tell(std::string_view field, int column, std::string problem) const {
        if (!problem.empty()) {
            context.Report({.type = std::string(table),
                            .id = id,
                            .field = std::string(field),
                            .value = CellText(row, column),
                            .problem = std::move(problem)});
        }
    }

    void TellUnless(std::string_view field, int column, std::int64_t right) const {
        std::string problem = IntegerProblem(row, column, std::numeric_limits<std::int64_t>::min());
        if (problem.empty() && row.Int(column) != right) {
            problem = fmt::format("{} is expected", right);
        }
        Tell(field, column, std::move(problem));
    }
};

// Which values are right for another format, only programs of that format know: then the range of
// programs only has to include them.
void ScanFormat(CheckContext& context) {
    const auto rows = context.Scan(
        "SELECT format_version, oldest_readable, newest_readable, schema_text FROM zt_schema");
    for (int number = 1; context.NextRow(*rows); ++number) {
        const OwnRow row{context, *rows, "zt_schema", fmt::format("row {}", number)};
        if (number > 1) {
            row.Tell("", 0, "a second row, where there is one only");
            continue;
        }
        row.Tell("schema_text", 3, FilledTextProblem(*rows, 3));
        row.Tell("format_version", 0, IntegerProblem(*rows, 0, schema::kOldestFormat));
        const std::int64_t format = rows->Int(0);
        if (context.GetLayout() == Layout::Sharded) {
            row.TellUnless("oldest_readable", 1, schema::kShardedFormat);
            row.TellUnless("newest_readable", 2, schema::kShardedFormat);
        } else if (format == schema::kFormatVersion) {
            row.TellUnless("oldest_readable", 1, schema::kOldestReadable);
            row.TellUnless("newest_readable", 2, schema::kNewestReadable);
        } else if (format < rows->Int(1) || format > rows->Int(2)) {
            row.Tell("format_version", 0, "programs of this format are said not to know it");
        }
    }
}

void ScanTypes(CheckContext& context) {
    const auto rows = context.Scan("SELECT id, name, kind FROM zt_record_type ORDER BY id");
    std::vector<bool> found(context.Schema().Types().size() + 1);
    while (context.NextRow(*rows)) {
        const OwnRow row{context, *rows, "zt_record_type", "id " + CellText(*rows, 0)};
        std::string problem = IntegerProblem(*rows, 0, 1);
        const schema::RecordType* const type =
            problem.empty() ? context.FindType(rows->Int(0)) : nullptr;
        if (type == nullptr) {
            row.Tell("id", 0, problem.empty() ? "the schema has no such record type" : problem);
            continue;
        }
        found[static_cast<std::size_t>(type->id)] = true;
        problem = TextProblem(*rows, 1);
        if (problem.empty() && rows->Text(1) != type->name) {
            problem = fmt::format("the schema calls it {}", type->name);
        }
        row.Tell("name", 1, std::move(problem));
        row.TellUnless("kind", 2, static_cast<std::int64_t>(type->kind));
    }
    for (const schema::RecordType& type : context.Schema().Types()) {
        if (!context.Stopped() && !found[static_cast<std::size_t>(type.id)]) {
            context.Report({.type = "zt_record_type",
                            .id = fmt::format("id {}", type.id),
                            .field = "",
                            .value = "",
                            .problem = fmt::format("the record type {} is missing", type.name)});
        }
    }
}

constexpr int kNameColumn = 2;
constexpr int kNextColumn = 3;
constexpr int kCompleteColumn = 4;
constexpr int kRejectedColumn = 5;
constexpr std::array<std::string_view, 8> kCounters = {
    "rejected", "created", "updated", "history", "attachments", "duplicates", "skipped", "run"};

void CheckJournalRow(const OwnRow& row, sql::Statement& countRejects,
                     sql::Statement& countWaiting) {
    const sql::Statement& cells = row.row;
    row.Tell("source_sha256", 0, HashProblem(cells, 0));
    row.Tell("configuration_sha256", 1, HashProblem(cells, 1));
    row.Tell("source_name", kNameColumn, FilledTextProblem(cells, kNameColumn));
    row.Tell("next_ordinal", kNextColumn, IntegerProblem(cells, kNextColumn, 0));
    std::string problem = IntegerProblem(cells, kCompleteColumn, 0);
    if (problem.empty() && cells.Int(kCompleteColumn) > 1) {
        problem = "neither 0 nor 1";
    }
    row.Tell("complete", kCompleteColumn, std::move(problem));
    int column = kRejectedColumn;
    for (const std::string_view counter : kCounters) {
        row.Tell(counter, column, IntegerProblem(cells, column, 0));
        ++column;
    }
    countRejects.BindAll(cells.Text(0), cells.Text(1));
    const std::int64_t named = sql::QueryInt(countRejects).value_or(0);
    if (sql::StorageOf(cells, kRejectedColumn) == sql::Storage::Integer &&
        cells.Int(kRejectedColumn) != named) {
        row.Tell("rejected", kRejectedColumn, fmt::format("zt_journal_reject names {}", named));
    }
    countWaiting.BindAll(cells.Text(0), cells.Text(1));
    const std::int64_t waiting = sql::QueryInt(countWaiting).value_or(0);
    if (waiting > 0 && sql::StorageOf(cells, kCompleteColumn) == sql::Storage::Integer &&
        cells.Int(kCompleteColumn) == 1) {
        row.Tell("complete", kCompleteColumn, fmt::format("zt_journal_waiting names {}", waiting));
    }
}

void ScanEntries(CheckContext& context) {
    const auto rows = context.Scan(
        "SELECT source_sha256, configuration_sha256, source_name, next_ordinal, complete, "
        "rejected, created, updated, history, attachments, duplicates, skipped, run "
        "FROM zt_journal ORDER BY source_sha256, configuration_sha256");
    const auto countRejects = context.Query(
        "SELECT count(*) FROM zt_journal_reject "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    const auto countWaiting = context.Query(
        "SELECT count(*) FROM zt_journal_waiting "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    while (context.NextRow(*rows)) {
        CheckJournalRow({context, *rows, "zt_journal", CellText(*rows, kNameColumn)}, *countRejects,
                        *countWaiting);
    }
}

// Checks a table that marks records of sources: the journal must have an entry for each source, and
// have got as far as the record.
void ScanMarks(CheckContext& context, std::string_view table) {
    const auto rows =
        context.Scan(fmt::format("SELECT source_sha256, configuration_sha256, ordinal FROM {} "
                                 "ORDER BY source_sha256, configuration_sha256, ordinal",
                                 table));
    const auto findNext = context.Query(
        "SELECT next_ordinal FROM zt_journal "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    while (context.NextRow(*rows)) {
        const OwnRow row{context, *rows, table, CellText(*rows, 0)};
        row.Tell("source_sha256", 0, HashProblem(*rows, 0));
        row.Tell("configuration_sha256", 1, HashProblem(*rows, 1));
        std::string problem = IntegerProblem(*rows, 2, 0);
        if (problem.empty()) {
            findNext->BindAll(rows->Text(0), rows->Text(1));
            const auto next = sql::QueryInt(*findNext);
            if (!next) {
                problem = "the journal knows no such source";
            } else if (rows->Int(2) >= *next) {
                problem = fmt::format("the journal says that {} records were handled", *next);
            }
        }
        row.Tell("ordinal", 2, std::move(problem));
    }
}

}  // namespace

void ScanSchemaTables(CheckContext& context) {
    ScanFormat(context);
    ScanTypes(context);
}

void ScanJournal(CheckContext& context) {
    ScanEntries(context);
    ScanMarks(context, "zt_journal_reject");
    ScanMarks(context, "zt_journal_waiting");
}

}  // namespace recorddb
