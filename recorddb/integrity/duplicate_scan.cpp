#include "recorddb/integrity/duplicate_scan.h"

#include <fmt/format.h>

#include <optional>

#include "recorddb/integrity/cell_rules.h"

namespace recorddb {

namespace {

class DuplicateScan {
  public:
    explicit DuplicateScan(CheckContext& context)
        : m_context(context),
          m_original(context.Query(
              "SELECT original FROM zt_duplicate WHERE record_type = $1 AND duplicate = $2")) {}

    void Run() {
        const auto rows = m_context.Scan(
            "SELECT record_type, duplicate, original, action_time FROM zt_duplicate "
            "ORDER BY record_type, duplicate");
        while (m_context.NextRow(*rows)) {
            const schema::RecordType* const type = TypeOf(*rows);
            if (type == nullptr) {
                m_context.Report(
                    {.type = "zt_duplicate",
                     .id = fmt::format("record_type {}, duplicate {}", CellText(*rows, typeColumn),
                                       CellText(*rows, duplicateColumn)),
                     .field = "",
                     .value = "",
                     .problem = "a mark of no known record type with states"});
                continue;
            }
            CheckMark(*rows, *type);
        }
    }

  private:
    enum Column { typeColumn, duplicateColumn, originalColumn, timeColumn };

    // Only records with states can be duplicates.
    const schema::RecordType* TypeOf(const sql::Statement& row) {
        if (!IntegerProblem(row, typeColumn, 1).empty() ||
            !IntegerProblem(row, duplicateColumn, 1).empty()) {
            return nullptr;
        }
        const schema::RecordType* const type = m_context.FindType(row.Int(typeColumn));
        return type != nullptr && type->HasStates() ? type : nullptr;
    }

    void CheckMark(const sql::Statement& row, const schema::RecordType& type) {
        const std::int64_t duplicate = row.Int(duplicateColumn);
        if (!m_context.Exists(type, duplicate)) {
            m_context.ReportRecord(type, duplicate, "duplicate of", "",
                                   "a mark of a record that there is not");
            return;
        }
        m_context.ReportCell(type, duplicate, "duplicate of, time", row, timeColumn,
                             TimeProblem(row, timeColumn));
        std::string problem = IntegerProblem(row, originalColumn, 1);
        if (problem.empty() && !m_context.Exists(type, row.Int(originalColumn))) {
            problem = fmt::format("there is no {} with this dbid", type.name);
        }
        if (problem.empty() && LeadsBack(type, duplicate, row.Int(originalColumn))) {
            problem = "the record is a duplicate of itself, by one step or several";
        }
        m_context.ReportCell(type, duplicate, "duplicate of", row, originalColumn,
                             std::move(problem));
    }

    // A circle is reported once, for its member with the lowest dbid, so only records with higher
    // ones are followed. Nearly all originals are older than their duplicates, which ends this at
    // once; no import makes a circle of so many steps.
    bool LeadsBack(const schema::RecordType& type, std::int64_t duplicate, std::int64_t original) {
        constexpr int mostSteps = 1000;
        std::optional<std::int64_t> current = original;
        for (int step = 0; current && *current > duplicate && step < mostSteps; ++step) {
            m_original->BindAll(type.id, *current);
            current = sql::QueryInt(*m_original);
        }
        return current == duplicate;
    }

    CheckContext& m_context;
    std::unique_ptr<sql::Statement> m_original;
};

}  // namespace

void ScanDuplicates(CheckContext& context) {
    DuplicateScan(context).Run();
}

}  // namespace recorddb
