#include "recorddb/integrity/key_scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
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

// Checks that zt_key has a row for each unique value of the records of a type, asking for those of
// many records together.
class UniqueValueScan {
  public:
    UniqueValueScan(CheckContext& context, const RecordType& type)
        : m_context(context), m_type(type) {}

    void Run(const FieldSet& set) {
        const auto rows =
            m_context.Scan(fmt::format("SELECT {0}{1} FROM {2} ORDER BY {0}", schema::kDbIdName,
                                       ColumnsOf(m_type, set), sql::Quoted(m_type.name)));
        while (m_context.NextRow(*rows)) {
            if (auto key = KeyIn(*rows, m_type, set)) {
                m_expected.push_back({rows->Int(0), *std::move(key)});
            }
            if (m_expected.size() == kTogether) {
                Compare();
            }
        }
        Compare();
    }

    // How many rows of zt_key are as they have to be.
    std::int64_t Sound() const { return m_sound; }

  private:
    static constexpr std::size_t kTogether = 1000;

    struct Expected {
        std::int64_t dbid;
        KeyRow key;
        std::optional<std::int64_t> named = std::nullopt;  // in zt_key
        bool hasValue = false;
    };

    void Compare() {
        Ask();
        for (const Expected& expected : m_expected) {
            m_sound += expected.named == expected.dbid && expected.hasValue ? 1 : 0;
            if (expected.named != expected.dbid) {
                m_context.ReportRecord(
                    m_type, expected.dbid, expected.key.field, expected.key.value,
                    expected.named ? fmt::format("zt_key has it for the dbid {}", *expected.named)
                                   : "zt_key does not have it, so it is not found by it");
            }
        }
        m_expected.clear();
    }

    void Ask() {
        QuestionRound round = m_context.Questions();
        QuestionRound::Question question = {
            .table = "zt_key",
            .columns = {{"record", sql::CellType::Integer}, {"value", sql::CellType::Text}},
            .keys = {{"hash", sql::CellType::Text},
                     {"record_type", sql::CellType::Integer},
                     {"field", sql::CellType::Text}},
            .order = "record",
            .most = 0,
            .cells = {}};
        for (const Expected& expected : m_expected) {
            question.cells.insert(question.cells.end(),
                                  {std::string_view(expected.key.hash), m_type.id,
                                   std::string_view(expected.key.field)});
        }
        round.Ask(std::move(question), [this](std::size_t key, std::span<const sql::Cell> row) {
            m_expected[key].named = IntIn(row[0]);
            const auto* const value = std::get_if<std::string_view>(&row[1]);
            m_expected[key].hasValue = value != nullptr && *value == m_expected[key].key.value;
        });
        round.Finish();
    }

    CheckContext& m_context;
    const RecordType& m_type;
    std::vector<Expected> m_expected;
    std::int64_t m_sound = 0;
};

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
    std::int64_t sound = 0;
    for (const RecordType& type : context.Schema().Types()) {
        if (IsSpread(Layout::Sharded, type)) {
            UniqueValueScan scan(context, type);
            for (const FieldSet& set : UniqueSetsOf(type)) {
                scan.Run(set);
            }
            sound += scan.Sound();
        }
        ScanLastDbId(context, type.id, type.name);
    }
    ScanLastDbId(context, kAttachmentNumbers, "zt_attachment");
    // Each of these rows belongs to a record; only where there are others, they are looked for.
    const auto count = context.Query("SELECT count(*) FROM zt_key");
    if (sql::QueryInt(*count) != sound) {
        KeyRowScan(context).Run();
    }
    ScanTurn(context);
}

}  // namespace recorddb
