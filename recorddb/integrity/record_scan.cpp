#include "recorddb/integrity/record_scan.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <vector>

#include "recorddb/integrity/cell_rules.h"
#include "recorddb/model/names.h"
#include "recorddb/model/stored_values.h"
#include "recorddb/store/tables/tables.h"

namespace recorddb {

namespace {

using schema::Field;
using schema::FieldKind;
using schema::RecordType;

class RecordScan {
  public:
    RecordScan(CheckContext& context, const RecordType& type) : m_context(context), m_type(type) {
        for (const Field& field : type.fields) {
            if (field.kind == FieldKind::ReferenceList && field.required) {
                m_requiredLists.emplace_back(
                    &field,
                    context.Query(fmt::format("SELECT 1 FROM {} WHERE record = $1 LIMIT 1",
                                              sql::Quoted(schema::ListTableName(type, field)))));
            } else if (schema::HasColumn(field.kind) && field.kind != FieldKind::DbId) {
                m_fields.push_back(&field);
            }
        }
    }

    void Run() {
        const auto rows = m_context.Scan(Sql());
        while (m_context.NextRow(*rows)) {
            CheckRow(*rows);
            m_context.AddRecord(m_type, rows->Int(0));
        }
    }

  private:
    // The columns of a row that stand before those of the fields.
    static constexpr int kDbIdColumn = 0;
    static constexpr int kVersionColumn = 1;
    static constexpr int kOwnColumns = 2;

    std::string Sql() const {
        std::string columns = fmt::format("{}, {}", schema::kDbIdName, schema::kVersionColumn);
        for (const Field* const field : m_fields) {
            columns += ", " + sql::Quoted(field->name);
        }
        return fmt::format("SELECT {} FROM {} ORDER BY {}", columns, sql::Quoted(m_type.name),
                           schema::kDbIdName);
    }

    void CheckRow(const sql::Statement& row) {
        const std::int64_t dbid = row.Int(kDbIdColumn);
        if (dbid < 1) {
            m_context.ReportRecord(m_type, dbid, std::string(schema::kDbIdName),
                                   std::to_string(dbid), "less than 1");
        }
        Tell(row, dbid, schema::kVersionColumn, kVersionColumn,
             IntegerProblem(row, kVersionColumn, 1));
        int column = kOwnColumns;
        for (const Field* const field : m_fields) {
            Tell(row, dbid, field->name, column, ProblemOf(row, dbid, *field, column));
            ++column;
        }
        for (const auto& [field, find] : m_requiredLists) {
            find->BindAll(dbid);
            if (!sql::QueryInt(*find)) {
                m_context.ReportRecord(m_type, dbid, field->name, "",
                                       "empty, where a value is required");
            }
        }
    }

    void Tell(const sql::Statement& row, std::int64_t dbid, std::string_view field, int column,
              std::string problem) {
        m_context.ReportCell(m_type, dbid, field, row, column, std::move(problem));
    }

    std::string ProblemOf(const sql::Statement& row, std::int64_t dbid, const Field& field,
                          int column) {
        if (sql::StorageOf(row, column) == sql::Storage::Null) {
            return field.required ? "empty, where a value is required" : "";
        }
        switch (field.kind) {
            case FieldKind::Integer:
                return IntegerProblem(row, column, std::numeric_limits<std::int64_t>::min());
            case FieldKind::Reference:
                return ReferenceProblem(row, field, column);
            case FieldKind::DateTime:
                return TimeProblem(row, column);
            default:
                break;
        }
        std::string problem = FilledTextProblem(row, column);
        return problem.empty() ? ValueProblem(row.Text(column), dbid, field) : problem;
    }

    std::string ReferenceProblem(const sql::Statement& row, const Field& field, int column) {
        std::string problem = IntegerProblem(row, column, std::numeric_limits<std::int64_t>::min());
        if (!problem.empty()) {
            return problem;
        }
        const RecordType& target = m_context.Schema().Type(field.target);
        const std::int64_t dbid = row.Int(column);
        return m_context.Exists(target, dbid)
                   ? ""
                   : fmt::format("there is no {} with this dbid", target.name);
    }

    std::string ValueProblem(std::string_view text, std::int64_t dbid, const Field& field) const {
        const auto isAmong = [text](const std::vector<std::string>& texts) {
            return std::find(texts.begin(), texts.end(), text) != texts.end();
        };
        if (field.kind == FieldKind::State && !isAmong(m_type.states)) {
            return fmt::format("not one of the states {}", fmt::join(m_type.states, ", "));
        }
        if (field.kind == FieldKind::Choice && !isAmong(field.choices)) {
            return fmt::format("not one of the choices {}", fmt::join(field.choices, ", "));
        }
        if (field.kind == FieldKind::DisplayId) {
            const std::string own = schema::FormatDisplayId(m_type.prefix, dbid);
            return text == own ? "" : fmt::format("the display id of its dbid is {}", own);
        }
        const auto most = static_cast<std::size_t>(field.maxLength);
        if (most != 0 && text.size() > most && CharacterCount(text) > field.maxLength) {
            return fmt::format("longer than the {} characters that the field takes", most);
        }
        return {};
    }

    CheckContext& m_context;
    const RecordType& m_type;
    std::vector<const Field*> m_fields;  // those with a column, without the dbid
    std::vector<std::pair<const Field*, std::unique_ptr<sql::Statement>>> m_requiredLists;
};

}  // namespace

void ScanRecords(CheckContext& context, const schema::RecordType& type) {
    RecordScan(context, type).Run();
}

}  // namespace recorddb
