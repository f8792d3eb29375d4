#include "load_fixture.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <fstream>
#include <iterator>

#include "recorddb/database.h"
#include "tool/commands/load_command.h"
#include "tool/packet/xml_text.h"

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

std::vector<std::string> FirstColumn(recorddb::Database& database, const std::string& sql) {
    auto& statement = database.GetConnection().Prepare(sql);
    const recorddb::sql::ResetGuard guard(statement);
    std::vector<std::string> rows;
    while (statement.Step()) {
        rows.emplace_back(statement.Text(0));
    }
    return rows;
}

// The rows of a table as SQL literals, in an order that depends on nothing but them.
std::vector<std::string> RowsOf(recorddb::Database& database, const std::string& table) {
    std::string row;
    for (const std::string& column :
         FirstColumn(database, fmt::format("SELECT name FROM pragma_table_info('{0}') "
                                           "WHERE '{0}' || '.' || name NOT IN "
                                           "('zt_duplicate.action_time', 'zt_journal.run')",
                                           table))) {
        row += fmt::format("{}quote(\"{}\")", row.empty() ? "" : " || '|' || ", column);
    }
    return FirstColumn(database, fmt::format("SELECT {} FROM \"{}\" ORDER BY 1", row, table));
}

// The same of a schema on a server.
std::string DumpOfServer(recorddb::Database& database) {
    std::string dump;
    for (const std::string& index :
         FirstColumn(database,
                     "SELECT indexdef FROM pg_indexes WHERE schemaname = current_schema() "
                     "ORDER BY indexname")) {
        dump += index + '\n';
    }
    for (const std::string& table :
         FirstColumn(database,
                     "SELECT tablename FROM pg_tables WHERE schemaname = "
                     "current_schema() AND tablename <> 'zt_turn' ORDER BY tablename")) {
        const std::string row = table == "zt_duplicate"
                                    ? "(t.record_type, t.duplicate, t.original)::text"
                                : table == "zt_journal" ? "(to_jsonb(t) - 'run')::text"
                                : table == "zt_schema"  ? "to_jsonb(t)::text"
                                                        : "t::text";
        for (const std::string& text : FirstColumn(
                 database, fmt::format("SELECT {} FROM \"{}\" AS t ORDER BY 1", row, table))) {
            dump += table + '|' + text + '\n';
        }
    }
    return dump;
}

}  // namespace

std::string RecordXml(const Fields& fields) {
    std::string xml = "<record>";
    for (const auto& [name, value] : fields) {
        xml += fmt::format("<field name=\"{}\">{}</field>", EscapedAttribute(name), value);
    }
    return xml + "</record>\n";
}

LoadFixture::LoadFixture(Engine engine) : LoadFixture(engine, kSchema) {}

LoadFixture::LoadFixture(Engine engine, const char* schema)
    : m_place(engine, m_folder.File("tracker.db"), schema), m_database(m_place.Location()) {}

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
    return fmt::format("{}", fmt::join(FirstColumn(*database, sql), "\n"));
}

void LoadFixture::Execute(const std::string& sql) {
    recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadWrite)
        ->GetConnection()
        .ExecuteScript(sql);
}

std::string LoadFixture::Dump() {
    const auto database = recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly);
    if (!IsFile()) {
        return DumpOfServer(*database);
    }
    std::string dump;
    for (const std::string& statement :
         FirstColumn(*database, "SELECT sql FROM sqlite_master ORDER BY name")) {
        dump += statement + '\n';
    }
    for (const std::string& table : FirstColumn(
             *database, "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name")) {
        for (const std::string& row : RowsOf(*database, table)) {
            dump += table + '|' + row + '\n';
        }
    }
    return dump;
}

std::string LoadFixture::ContentOf(const std::filesystem::path& file) {
    std::ifstream in(file);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace tool
