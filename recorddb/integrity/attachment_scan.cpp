#include "recorddb/integrity/attachment_scan.h"

#include <fmt/format.h>

#include <algorithm>

#include "recorddb/integrity/cell_rules.h"

namespace recorddb {

namespace {

class AttachmentScan {
  public:
    explicit AttachmentScan(CheckContext& context)
        : m_context(context),
          m_find(context.Query("SELECT 1 FROM zt_content WHERE sha256 = $1 LIMIT 1")) {}

    std::uint64_t Run() {
        const auto rows = m_context.Scan(
            "SELECT dbid, record_type, record, field, filename, filesize, description, sha256 "
            "FROM zt_attachment ORDER BY dbid");
        while (m_context.NextRow(*rows)) {
            const schema::RecordType* const type = TypeOf(*rows);
            if (type == nullptr) {
                m_context.Report({.type = "zt_attachment",
                                  .id = fmt::format("dbid {}", rows->Int(dbIdColumn)),
                                  .field = "record_type",
                                  .value = CellText(*rows, typeColumn),
                                  .problem = "an attachment of no known record type"});
                continue;
            }
            CheckAttachment(*rows, *type);
        }
        return m_contentFaults;
    }

  private:
    enum Column {
        dbIdColumn,
        typeColumn,
        recordColumn,
        fieldColumn,
        nameColumn,
        sizeColumn,
        descriptionColumn,
        hashColumn
    };

    const schema::RecordType* TypeOf(const sql::Statement& row) {
        return IntegerProblem(row, typeColumn, 1).empty() &&
                       IntegerProblem(row, recordColumn, 1).empty()
                   ? m_context.FindType(row.Int(typeColumn))
                   : nullptr;
    }

    void CheckAttachment(const sql::Statement& row, const schema::RecordType& type) {
        const std::int64_t record = row.Int(recordColumn);
        const std::string name =
            fmt::format("{}, {}", CellText(row, fieldColumn), CellText(row, nameColumn));
        if (!m_context.Exists(type, record)) {
            m_context.ReportRecord(type, record, name, "",
                                   "an attachment of a record that there is not");
            return;
        }
        const auto tell = [&](std::string_view part, int column, std::string problem) {
            return m_context.ReportCell(type, record, fmt::format("{}, {}", name, part), row,
                                        column, std::move(problem));
        };
        tell("field", fieldColumn, FieldProblem(row, type));
        tell("name", nameColumn, NameProblem(row));
        tell("size", sizeColumn, IntegerProblem(row, sizeColumn, 0));
        tell("description", descriptionColumn, TextProblem(row, descriptionColumn));
        m_contentFaults += tell("content", hashColumn, ContentProblem(row)) ? 1U : 0U;
    }

    static std::string FieldProblem(const sql::Statement& row, const schema::RecordType& type) {
        std::string problem = TextProblem(row, fieldColumn);
        const auto isField = [&row](const schema::Field& field) {
            return field.kind == schema::FieldKind::Attachments &&
                   field.name == row.Text(fieldColumn);
        };
        if (problem.empty() && std::none_of(type.fields.begin(), type.fields.end(), isField)) {
            problem = fmt::format("not an attachments field of {}", type.name);
        }
        return problem;
    }

    static std::string NameProblem(const sql::Statement& row) {
        std::string problem = FilledTextProblem(row, nameColumn);
        if (problem.empty() && row.Text(nameColumn).find('/') != std::string_view::npos) {
            problem = "a path, where the name of a file belongs";
        }
        return problem;
    }

    std::string ContentProblem(const sql::Statement& row) {
        std::string problem = HashProblem(row, hashColumn);
        if (problem.empty()) {
            m_find->BindAll(row.Text(hashColumn));
            problem = sql::QueryInt(*m_find) ? "" : "there is no content with this SHA-256";
        }
        return problem;
    }

    CheckContext& m_context;
    std::unique_ptr<sql::Statement> m_find;
    std::uint64_t m_contentFaults = 0;
};

}  // namespace

std::uint64_t ScanAttachments(CheckContext& context) {
    return AttachmentScan(context).Run();
}

}  // namespace recorddb
