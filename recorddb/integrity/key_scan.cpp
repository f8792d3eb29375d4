#include "recorddb/integrity/key_scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "recorddb/integrity/cell_rules.h"
#include "recorddb/store/batch/key_row.h"
#include "recorddb/store/tables/cells.h"
#include "recorddb/store/tables/last_dbids.h"
#include "recorddb/store/tables/table_layout.h"

namespace recorddb {

namespace {

using schema::RecordType;

std::string ColumnsOf(const RecordType& type, const FieldSet& set) {
    std::string columns;
    for (const std::size_t field : set) {
        columns += ", " + sql::Quoted(type.fields[field].name);
    }
    return columns;
}

// The row that zt_key must have for a record. `row` holds its dbid and then the columns of `set`.
std::optional<KeyRow> KeyIn(const sql::Statement& row, const RecordType& type,
                            const FieldSet& set) {
    std::vector<FieldValue> values;
    int column = 0;
    for (const std::size_t field : set) {
        ++column;
        const bool isNumber = ColumnOf(type.fields[field]).type == sql::CellType::Integer;
        if (row.IsNull(column)) {
            values.emplace_back();
        } else if (isNumber) {
            values.emplace_back(row.Int(column));
        } else {
            values.emplace_back(std::string(row.Text(column)));
        }
    }
    std::vector<const FieldValue*> borrowed;
    borrowed.reserve(values.size());
    for (const FieldValue& value : values) {
        borrowed.push_back(&value);
    }
    return KeyRowOf(type, set, borrowed);
}

// Checks that zt_key has a row for each unique value of the records.
void ScanRecordsForKeys(CheckContext& context, const RecordType& type, const FieldSet& set) {
    const auto rows =
        context.Scan(fmt::format("SELECT {0}{1} FROM {2} ORDER BY {0}", schema::kDbIdName,
                                 ColumnsOf(type, set), sql::Quoted(type.name)));
    const auto find = context.Query(
        "SELECT record FROM zt_key WHERE hash = $1 AND record_type = $2 AND field = $3");
    while (context.NextRow(*rows)) {
        const auto key = KeyIn(*rows, type, set);
        if (!key) {
            continue;
        }
        const std::int64_t dbid = rows->Int(0);
        find->BindAll(key->hash, type.id, key->field);
        const auto named = sql::QueryInt(*find);
        if (named != dbid) {
            context.ReportRecord(type, dbid, key->field, key->value,
                                 named ? fmt::format("zt_key has it for the dbid {}", *named)
                                       : "zt_key does not have it, so it is not found by it");
        }
    }
}

// Checks that each row of zt_key belongs to a record.
class KeyRowScan {
  public:
    explicit KeyRowScan(CheckContext& context) : m_context(context) {
        for (const RecordType& type : context.Schema().Types()) {
            m_ofTypes.emplace_back();
            if (!IsSpread(Layout::Sharded, type)) {
                continue;
            }
            for (const FieldSet& set : UniqueSetsOf(type)) {
                m_ofTypes.back().push_back(
                    {set, context.Query(fmt::format("SELECT {0}{1} FROM {2} WHERE {0} = $1",
                                                    schema::kDbIdName, ColumnsOf(type, set),
                                                    sql::Quoted(type.name)))});
            }
        }
    }

    void Run() {
        const auto rows = m_context.Scan(
            "SELECT hash, record_type, field, value, record FROM zt_key "
            "ORDER BY hash, record_type, field");
        while (m_context.NextRow(*rows)) {
            std::string problem = HashProblem(*rows, 0);
            if (problem.empty() && !IsOfARecord(*rows)) {
                problem = fmt::format("the record with the dbid {} does not have this value",
                                      rows->Int(4));
            }
            if (!problem.empty()) {
                m_context.Report({.type = "zt_key",
                                  .id = CellText(*rows, 0),
                                  .field = CellText(*rows, 2),
                                  .value = CellText(*rows, 3),
                                  .problem = std::move(problem)});
            }
        }
    }

  private:
    struct OfSet {
        FieldSet set;
        std::unique_ptr<sql::Statement> find;
    };

    bool IsOfARecord(const sql::Statement& row) {
        const RecordType* const type = m_context.FindType(row.Int(1));
        if (type == nullptr) {
            return false;
        }
        auto& sets = m_ofTypes[static_cast<std::size_t>(type->id - 1)];
        return std::any_of(sets.begin(), sets.end(), [&](const OfSet& ofSet) {
            const sql::ResetGuard guard(*ofSet.find);
            ofSet.find->BindAll(row.Int(4));
            const auto key =
                ofSet.find->Step() ? KeyIn(*ofSet.find, *type, ofSet.set) : std::optional<KeyRow>();
            return key && key->hash == row.Text(0) && key->field == row.Text(2) &&
                   key->value == row.Text(3);
        });
    }

    CheckContext& m_context;
    std::vector<std::vector<OfSet>> m_ofTypes;
};

void ScanLastDbId(CheckContext& context, std::int64_t numbered, const std::string& table) {
    const auto highest =
        context.Query(fmt::format("SELECT max({}) FROM {}", schema::kDbIdName, sql::Quoted(table)));
    const auto last = context.Query("SELECT dbid FROM zt_last_dbid WHERE record_type = $1");
    last->BindAll(numbered);
    const auto stored = sql::QueryInt(*last);
    const std::int64_t given = sql::QueryInt(*highest).value_or(0);
    if (!stored || *stored < given) {
        context.Report(
            {.type = "zt_last_dbid",
             .id = fmt::format("record_type {}", numbered),
             .field = std::string(schema::kDbIdName),
             .value = stored ? std::to_string(*stored) : "",
             .problem = fmt::format("less than {}, which is in use in {}", given, table)});
    }
}

void ScanTurn(CheckContext& context) {
    const auto count = context.Query("SELECT count(*) FROM zt_turn");
    const std::int64_t rows = sql::QueryInt(*count).value_or(0);
    if (rows != 1) {
        context.Report({.type = "zt_turn",
                        .id = "",
                        .field = "",
                        .value = "",
                        .problem = fmt::format("{} rows, where there is one only", rows)});
    }
}

}  // namespace

void ScanShardedTables(CheckContext& context) {
    if (context.GetLayout() != Layout::Sharded) {
        return;
    }
    for (const RecordType& type : context.Schema().Types()) {
        if (IsSpread(Layout::Sharded, type)) {
            for (const FieldSet& set : UniqueSetsOf(type)) {
                ScanRecordsForKeys(context, type, set);
            }
        }
        ScanLastDbId(context, type.id, type.name);
    }
    ScanLastDbId(context, kAttachmentNumbers, "zt_attachment");
    KeyRowScan(context).Run();
    ScanTurn(context);
}

}  // namespace recorddb
