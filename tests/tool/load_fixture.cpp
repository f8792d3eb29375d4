#include "load_fixture.h"

#include <fmt/format.h>

#include "recorddb/database.h"
#include "recorddb/schema/schema_file.h"
#include "tool/commands/load_command.h"
#include "tool/xml_text.h"

namespace tool {

namespace {

constexpr const char* kSchema = R"(record_types:
  user:
    key: [login]
    fields:
      login: {type: text, max_length: 20, required: true}
      email: {type: text, unique: true}
  keyword:
    key: [name]
    fields:
      name: {type: text, required: true}
  bug:
    prefix: BUG
    states: [NEW, OPEN, CLOSED]
    duplicate_state: CLOSED
    fields:
      source_id: {type: text, unique: true}
      title: {type: text, max_length: 30, required: true}
      votes: {type: integer}
      owner: {type: reference, to: user}
      keywords: {type: reference_list, to: keyword}
      files: {type: attachments}
      log: {type: history}
)";

// Everything a load writes for people to keep; names first, so that the dump is stable.
constexpr const char* kTables[] = {"user",       "keyword",       "bug",       "bug__keywords",
                                   "zt_history", "zt_attachment", "zt_content"};

}  // namespace

std::string RecordXml(const Fields& fields) {
    std::string xml = "<record>";
    for (const auto& [name, value] : fields) {
        xml += fmt::format("<field name=\"{}\">{}</field>", EscapedAttribute(name), value);
    }
    return xml + "</record>\n";
}

LoadFixture::LoadFixture() : m_database(m_folder.File("tracker.db")) {
    recorddb::Database::Create(m_database, recorddb::schema::ReadSchema(kSchema, "schema.yaml"));
}

std::string LoadFixture::Configuration(const std::string& file, std::string_view data,
                                       std::string_view type, std::string_view key,
                                       std::string_view more) {
    return m_folder.Write(file,
                          fmt::format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configuration>"
                                      "<import_data name=\"{}\"/><record_type name=\"{}\"/>"
                                      "<original_id name=\"{}\"/>{}</configuration>\n",
                                      data, type, key, more));
}

std::string LoadFixture::Records(const std::string& file, const std::vector<Fields>& records) {
    std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<records>\n";
    for (const Fields& fields : records) {
        text += RecordXml(fields);
    }
    return m_folder.Write(file, text + "</records>\n");
}

int LoadFixture::Load(std::vector<std::string> sources) {
    m_options.database = m_database;
    m_options.sources = std::move(sources);
    std::ostringstream out;
    std::ostringstream err;
    const int code = RunLoad(m_options, out, err);
    m_said = err.str() + out.str();
    return code;
}

std::string LoadFixture::Query(const std::string& sql) {
    const auto database = recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
    auto& statement = database->GetConnection().Prepare(sql);
    std::string rows;
    while (statement.Step()) {
        rows += (rows.empty() ? "" : "\n") + std::string(statement.Text(0));
    }
    return rows;
}

std::string LoadFixture::Dump() {
    const auto database = recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
    std::string dump;
    for (const char* table : kTables) {
        auto& statement = database->GetConnection().Prepare(
            fmt::format("SELECT * FROM {} ORDER BY 1, 2, 3", table));
        while (statement.Step()) {
            dump += table;
            for (int column = 0; column < statement.ColumnCount(); ++column) {
                dump += "|" + std::string(statement.Text(column));
            }
            dump += '\n';
        }
    }
    return dump;
}

}  // namespace tool
