#include "recorddb/integrity/history_scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <type_traits>
#include <vector>

#include "platform/core/adhistory.h"
#include "recorddb/integrity/cell_rules.h"
#include "recorddb/store/batch/history_expiry.h"

namespace recorddb {

namespace {

// The texts of an entry, from HistoryScan::firstTextColumn on, and how many UTF-16 units the core
// has room for.
struct TextColumn {
    const char* name;
    std::size_t most;
};

template <typename Text>
constexpr std::size_t kRoomOf = std::extent_v<Text> - 1;

constexpr std::array<TextColumn, 5> kTextColumns = {{
    {"user_name", kRoomOf<decltype(AdHistory::userName)>},
    {"action_name", kRoomOf<decltype(AdHistory::actionName)>},
    {"old_state", kRoomOf<decltype(AdHistory::oldState)>},
    {"new_state", kRoomOf<decltype(AdHistory::newState)>},
    {"comments", kRoomOf<decltype(AdHistory::comments)>},
}};

class HistoryScan {
  public:
    explicit HistoryScan(CheckContext& context) : m_context(context) {}

    void Run() {
        const auto rows = m_context.Scan(
            "SELECT record_type, record, entry, field, action_time, expiry_time, user_name, "
            "action_name, old_state, new_state, comments FROM zt_history "
            "ORDER BY record_type, record, entry");
        while (m_context.NextRow(*rows)) {
            BeginRecord(*rows);
            if (m_type != nullptr) {
                CheckEntry(*rows);
            }
        }
        if (!m_context.Stopped()) {
            EndRecord();
        }
    }

  private:
    enum Column {
        typeColumn,
        recordColumn,
        entryColumn,
        fieldColumn,
        actionTimeColumn,
        expiryTimeColumn,
        firstTextColumn
    };

    void BeginRecord(const sql::Statement& row) {
        if (!IntegerProblem(row, typeColumn, 1).empty() ||
            !IntegerProblem(row, recordColumn, 1).empty() ||
            m_context.FindType(row.Int(typeColumn)) == nullptr) {
            EndRecord();
            m_context.Report(
                {.type = "zt_history",
                 .id = fmt::format("record_type {}, record {}, entry {}", CellText(row, typeColumn),
                                   CellText(row, recordColumn), CellText(row, entryColumn)),
                 .field = "",
                 .value = "",
                 .problem = "an entry of no known record type"});
            return;
        }
        if (m_type != nullptr && m_type->id == row.Int(typeColumn) &&
            m_record == row.Int(recordColumn)) {
            return;
        }
        EndRecord();
        m_type = m_context.FindType(row.Int(typeColumn));
        m_field = m_type->HistoryField();
        m_record = row.Int(recordColumn);
        m_last = 0;
        m_belongs = m_context.Exists(*m_type, m_record);
        if (!m_belongs) {
            m_context.ReportRecord(*m_type, m_record, FieldName(), "",
                                   "history of a record that there is not");
        }
    }

    void CheckEntry(const sql::Statement& row) {
        if (!m_belongs) {
            return;
        }
        const bool counted = CheckNumber(row);
        CheckField(row);
        const bool begins =
            !Tell(row, "action_time", actionTimeColumn, TimeProblem(row, actionTimeColumn));
        const bool hasExpiry = sql::StorageOf(row, expiryTimeColumn) != sql::Storage::Null;
        const bool expires = !hasExpiry || !Tell(row, "expiry_time", expiryTimeColumn,
                                                 TimeProblem(row, expiryTimeColumn));
        int column = firstTextColumn;
        for (const TextColumn& text : kTextColumns) {
            Tell(row, text.name, column, UnitsProblem(row, column, text.most));
            ++column;
        }
        m_comparable = m_comparable && counted && begins && expires;
        if (m_comparable) {
            m_times.push_back({.entry = m_last,
                               .actionTime = std::string(row.Text(actionTimeColumn)),
                               .expiryTime = std::string(row.Text(expiryTimeColumn))});
        }
    }

    // True when the entry has a number. A gap is reported once, not for all entries after it.
    bool CheckNumber(const sql::Statement& row) {
        std::string problem = IntegerProblem(row, entryColumn, 1);
        const bool isNumber = problem.empty();
        const std::int64_t expected = m_last + 1;
        m_last = isNumber ? row.Int(entryColumn) : expected;
        if (isNumber && m_last != expected) {
            problem = fmt::format("the entry {} is expected", expected);
        }
        m_context.ReportCell(*m_type, m_record, FieldName() + ", entry", row, entryColumn,
                             std::move(problem));
        return isNumber;
    }

    // Imports write all entries of a type to the first of its history fields.
    void CheckField(const sql::Statement& row) {
        std::string problem = TextProblem(row, fieldColumn);
        if (problem.empty() && m_field == nullptr) {
            problem = fmt::format("{} has no history field", m_type->name);
        } else if (problem.empty() && row.Text(fieldColumn) != m_field->name) {
            problem = fmt::format("the history of {} stands in {}", m_type->name, m_field->name);
        }
        Tell(row, "field", fieldColumn, std::move(problem));
    }

    // Works out the expiry anew: it comes out the same only when all the entries that it was worked
    // out from are there.
    void EndRecord() {
        if (m_type != nullptr && m_comparable) {
            std::vector<HistoryTimes> right = m_times;
            WorkOutExpiry(right);
            std::sort(right.begin(), right.end(),
                      [](const auto& a, const auto& b) { return a.entry < b.entry; });
            for (std::size_t i = 0; i < right.size(); ++i) {
                if (right[i] != m_times[i]) {
                    m_context.ReportRecord(
                        *m_type, m_record,
                        fmt::format("{}, entry {}, expiry_time", FieldName(), right[i].entry),
                        m_times[i].expiryTime,
                        fmt::format("the next entry begins at {}", right[i].expiryTime));
                }
            }
        }
        m_times.clear();
        m_comparable = true;
        m_type = nullptr;
    }

    std::string FieldName() const { return m_field == nullptr ? "history" : m_field->name; }

    bool Tell(const sql::Statement& row, std::string_view name, int column, std::string problem) {
        return !problem.empty() &&
               m_context.ReportCell(*m_type, m_record,
                                    fmt::format("{}, entry {}, {}", FieldName(), m_last, name), row,
                                    column, std::move(problem));
    }

    CheckContext& m_context;
    const schema::RecordType* m_type = nullptr;  // of the record under way; null between records
    const schema::Field* m_field = nullptr;      // of its type; null when it has none
    std::int64_t m_record = 0;
    bool m_belongs = false;
    std::int64_t m_last = 0;  // number of the entry under way
    bool m_comparable = true;
    std::vector<HistoryTimes> m_times;  // by number
};

}  // namespace

void ScanHistory(CheckContext& context) {
    HistoryScan(context).Run();
}

}  // namespace recorddb
