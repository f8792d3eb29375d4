#include "recorddb/integrity/list_scan.h"

#include <fmt/format.h>

#include <limits>
#include <optional>
#include <unordered_set>

#include "recorddb/integrity/cell_rules.h"
#include "recorddb/model/names.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

class ListScan {
  public:
    ListScan(CheckContext& context, const schema::RecordType& type, const schema::Field& field)
        : m_context(context),
          m_type(type),
          m_field(field),
          m_target(context.Schema().Type(field.target)),
          m_table(schema::ListTableName(type, field)) {}

    void Run() {
        const auto rows = m_context.Scan(
            fmt::format("SELECT record, position, target FROM {} ORDER BY record, position",
                        sql::Quoted(m_table)));
        while (m_context.NextRow(*rows)) {
            if (std::string problem = IntegerProblem(*rows, kRecordColumn, 1); !problem.empty()) {
                m_context.Report({.type = m_table,
                                  .id = CellText(*rows, kRecordColumn),
                                  .field = "record",
                                  .value = "",
                                  .problem = std::move(problem)});
                continue;
            }
            BeginRecord(rows->Int(kRecordColumn));
            if (m_belongs) {
                CheckPosition(*rows);
                CheckTarget(*rows);
            }
        }
    }

  private:
    static constexpr int kRecordColumn = 0;
    static constexpr int kPositionColumn = 1;
    static constexpr int kTargetColumn = 2;

    void BeginRecord(std::int64_t record) {
        if (m_record == record) {
            return;
        }
        m_record = record;
        m_next = 0;
        m_positionsTold = false;
        m_targets.clear();
        m_belongs = m_context.Exists(m_type, record);
        if (!m_belongs) {
            m_context.ReportRecord(m_type, record, m_field.name, "",
                                   "a list of a record that there is not");
        }
    }

    // Only the first wrong position is reported: those after it are wrong for the same reason.
    void CheckPosition(const sql::Statement& row) {
        std::string problem = IntegerProblem(row, kPositionColumn, 0);
        if (problem.empty() && row.Int(kPositionColumn) != m_next) {
            problem = fmt::format("the position {} is expected", m_next);
        }
        if (!m_positionsTold) {
            m_positionsTold = m_context.ReportCell(m_type, *m_record, m_field.name + ", position",
                                                   row, kPositionColumn, std::move(problem));
        }
        ++m_next;
    }

    void CheckTarget(const sql::Statement& row) {
        std::string problem =
            IntegerProblem(row, kTargetColumn, std::numeric_limits<std::int64_t>::min());
        if (problem.empty() && !m_context.Exists(m_target, row.Int(kTargetColumn))) {
            problem = fmt::format("there is no {} with this dbid", m_target.name);
        }
        if (problem.empty() && !m_targets.insert(row.Int(kTargetColumn)).second) {
            problem = fmt::format("the {} with this dbid stands in the list twice", m_target.name);
        }
        m_context.ReportCell(m_type, *m_record, m_field.name, row, kTargetColumn,
                             std::move(problem));
    }

    CheckContext& m_context;
    const schema::RecordType& m_type;
    const schema::Field& m_field;
    const schema::RecordType& m_target;
    const std::string m_table;
    std::optional<std::int64_t> m_record;  // whose list is under way
    bool m_belongs = false;
    bool m_positionsTold = false;
    std::int64_t m_next = 0;  // position
    std::unordered_set<std::int64_t> m_targets;
};

}  // namespace

void ScanLists(CheckContext& context, const schema::RecordType& type, const schema::Field& field) {
    ListScan(context, type, field).Run();
}

}  // namespace recorddb
