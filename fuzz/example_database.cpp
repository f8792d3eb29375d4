#include "example_database.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "input.h"
#include "platform/foundation/utf.h"
#include "recorddb/schema.h"
#include "ztimporter/adimporter.h"

namespace fuzz {

namespace fs = std::filesystem;

namespace {

const fs::path kExample = ZT_EXAMPLE_TRACKER;

std::string ReadFile(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    Expect(file.is_open(), "the example is there");
    return {std::istreambuf_iterator<char>(file), {}};
}

// The example's types, and one whose key has several parts, nested ones among them.
std::string SchemaText() {
    return ReadFile(kExample / "schema.yaml") +
           "  berth:\n"
           "    key: [pier, keeper]\n"
           "    fields:\n"
           "      pier:   {type: text}\n"
           "      keeper: {type: reference, to: user}\n"
           "      next:   {type: reference, to: berth}\n"
           "      guests: {type: reference_list, to: berth}\n";
}

}  // namespace

ExampleDatabase& ExampleDatabase::Instance() {
    static ExampleDatabase database;
    return database;
}

ExampleDatabase::ExampleDatabase() {
    const std::string file = m_folder.File("tracker.db");
    recorddb::Database::Create(file, recorddb::schema::ReadSchema(SchemaText(), "schema.yaml"));
    m_database = recorddb::Database::Open(file, recorddb::Database::Mode::ReadWrite);
    recorddb::SessionOptions options;
    options.attachmentsFolder = kExample / "attachments";
    m_session = m_database->OpenSession(options);
    const auto transaction = m_session->BeginTransaction();
    ImportExample();
    transaction->Commit();
}

void ExampleDatabase::ImportExample() {
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(kExample / "packets")) {
        files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    AdImporter importer;
    importer.SetSession(AdSessionPtr(m_session.GetPtr()));
    for (const fs::path& file : files) {
        const std::u16string text = Utf8ToUtf16Lossy(ReadFile(file));
        const auto* packet = reinterpret_cast<const unsigned short*>(text.c_str());
        Expect(importer.Import(packet).IsEmpty(), "the example can be imported");
    }
}

std::string ExampleDatabase::Contents() {
    static constexpr std::array kQueries = {
        "SELECT * FROM \"user\"",      "SELECT * FROM component",     "SELECT * FROM keyword",
        "SELECT * FROM bug",           "SELECT * FROM bug__keywords", "SELECT * FROM berth",
        "SELECT * FROM berth__guests", "SELECT * FROM zt_history",    "SELECT * FROM zt_attachment",
        "SELECT * FROM zt_duplicate"};
    std::string contents;
    for (const char* query : kQueries) {
        recorddb::sql::Statement& statement = m_database->GetConnection().Prepare(query);
        const recorddb::sql::ResetGuard guard(statement);
        while (statement.Step()) {
            for (int column = 0; column < statement.ColumnCount(); ++column) {
                contents += statement.IsNull(column) ? "-" : "'";
                contents += statement.Text(column);
            }
            contents += '\n';
        }
    }
    return contents;
}

bool ExampleDatabase::HasKeyword(std::string_view name) {
    recorddb::sql::Statement& statement =
        m_database->GetConnection().Prepare("SELECT count(*) FROM keyword WHERE name = $1");
    statement.BindAll(name);
    return recorddb::sql::QueryInt(statement) > 0;
}

}  // namespace fuzz
