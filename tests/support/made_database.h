#ifndef TESTS_SUPPORT_MADE_DATABASE_H
#define TESTS_SUPPORT_MADE_DATABASE_H

#include <fmt/format.h>

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engines.h"
#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "temporary_folder.h"

// Databases on the server that tests of this process have left as they were made. Making one takes
// the server longer than most tests do; emptying one takes next to nothing.
class LeftDatabases {
  public:
    struct Left {
        std::unique_ptr<DatabasePlace> place;
        std::string definitions;  // of all that is in its schema, as it was made
        std::string emptying;     // the script that makes its rows what they were
    };

    static LeftDatabases& Instance() {
        DatabasePlace::Server();  // which has to outlive the places
        static LeftDatabases databases;
        return databases;
    }

    // What was made for the same `purpose` before.
    std::optional<Left> Take(const std::string& purpose) {
        std::vector<Left>& left = m_left[purpose];
        if (left.empty()) {
            return std::nullopt;
        }
        Left taken = std::move(left.back());
        left.pop_back();
        return taken;
    }

    static Left Note(std::unique_ptr<DatabasePlace> place) {
        const std::string& schema = place->Schema();
        std::string emptying = "BEGIN; SET LOCAL session_replication_role = replica;";
        std::string filling;
        for (const std::string& table : Texts(kTables, schema)) {
            const std::string name = schema + "." + recorddb::sql::Quoted(table);
            emptying += "DELETE FROM " + name + ";";
            const auto rows = Texts(fmt::format("SELECT json_agg(t) FROM {} AS t", name));
            if (!rows.front().empty()) {
                filling += fmt::format(
                    "INSERT INTO {0} SELECT * FROM json_populate_recordset(NULL::{0}, "
                    "$rows${1}$rows$);",
                    name, rows.front());
            }
        }
        std::string definitions = Texts(kDefinitions, schema).front();
        return {std::move(place), std::move(definitions), emptying + filling + "COMMIT"};
    }

    // Keeps a database, unless a test has changed more than rows.
    void Give(const std::string& purpose, Left left) {
        try {
            if (Texts(kDefinitions, left.place->Schema()).front() == left.definitions) {
                DatabasePlace::Server().ExecuteScript(left.emptying);
                m_left[purpose].push_back(std::move(left));
            }
        } catch (const recorddb::sql::Error&) {
            // It goes; what is wrong shows where the next one is made.
            DatabasePlace::Server().ExecuteScript("ROLLBACK");
        }
    }

  private:
    LeftDatabases() = default;

    static std::vector<std::string> Texts(std::string_view query,
                                          const std::optional<std::string>& schema = {}) {
        recorddb::sql::Statement& statement = DatabasePlace::Server().Prepare(query);
        const recorddb::sql::ResetGuard guard(statement);
        if (schema) {
            statement.BindText(1, *schema);
        }
        std::vector<std::string> texts;
        while (statement.Step()) {
            texts.emplace_back(statement.Text(0));
        }
        return texts;
    }

    static constexpr std::string_view kTables =
        "SELECT c.relname FROM pg_class AS c JOIN pg_namespace AS n ON n.oid = c.relnamespace "
        "WHERE n.nspname = $1 AND c.relkind = 'r' ORDER BY c.relname";

    // Each change of a definition writes a row of one of these anew.
    static constexpr std::string_view kDefinitions =
        "WITH s AS (SELECT oid, xmin FROM pg_namespace WHERE nspname = $1), "
        "c AS (SELECT oid, xmin FROM pg_class WHERE relnamespace = (SELECT oid FROM s)), "
        "d AS (SELECT 's', oid, 0 AS part, xmin FROM s "
        "UNION ALL SELECT 'c', oid, 0, xmin FROM c "
        "UNION ALL SELECT 'a', attrelid, attnum, xmin FROM pg_attribute "
        "WHERE attrelid IN (SELECT oid FROM c) "
        "UNION ALL SELECT 'k', oid, 0, xmin FROM pg_constraint WHERE conrelid IN (SELECT oid FROM "
        "c) "
        "UNION ALL SELECT 't', oid, 0, xmin FROM pg_trigger WHERE tgrelid IN (SELECT oid FROM c) "
        "UNION ALL SELECT 'r', oid, 0, xmin FROM pg_rewrite WHERE ev_class IN (SELECT oid FROM c) "
        "UNION ALL SELECT 'p', oid, 0, xmin FROM pg_policy WHERE polrelid IN (SELECT oid FROM c)) "
        "SELECT md5(string_agg(d::text, ' ' ORDER BY d::text)) FROM d";

    std::map<std::string, std::vector<Left>> m_left;
};

// A new database of the record types in a schema file's text, which goes with the object. Made once
// for all tests of a process that take one of the same kind one after the other.
class MadeDatabase {
  public:
    // `file` is where it stands when it is a file.
    MadeDatabase(Engine engine, const std::string& file, const std::string& schema)
        : m_purpose(fmt::format("{} {}", static_cast<int>(LayoutOn(engine)), schema)) {
        if (engine == Engine::Sqlite || TestServer() == nullptr) {
            m_made.place = std::make_unique<DatabasePlace>(engine, file);
            std::filesystem::copy_file(FileOf(schema), file);
            return;
        }
        if (auto left = LeftDatabases::Instance().Take(m_purpose)) {
            m_made = *std::move(left);
            return;
        }
        auto place = std::make_unique<DatabasePlace>(engine, file);
        recorddb::Database::Create(place->Location(),
                                   recorddb::schema::ReadSchema(schema, "schema.yaml"),
                                   LayoutOn(engine));
        m_made = LeftDatabases::Note(std::move(place));
    }
    MadeDatabase(const MadeDatabase&) = delete;
    MadeDatabase& operator=(const MadeDatabase&) = delete;
    ~MadeDatabase() {
        if (!IsFile()) {
            LeftDatabases::Instance().Give(m_purpose, std::move(m_made));
        }
    }

    const std::string& Location() const { return m_made.place->Location(); }
    // Empty for a file.
    const std::string& Schema() const { return m_made.place->Schema(); }
    bool IsFile() const { return m_made.place->IsFile(); }

  private:
    // Making a file waits for the disk, so each test gets a copy.
    static const std::string& FileOf(const std::string& schema) {
        static const TemporaryFolder kFolder;
        static std::map<std::string, std::string> files;
        const auto found = files.find(schema);
        if (found != files.end()) {
            return found->second;
        }
        std::string file = kFolder.File(fmt::format("made-{}.db", files.size()));
        recorddb::Database::Create(file, recorddb::schema::ReadSchema(schema, "schema.yaml"));
        return files.emplace(schema, std::move(file)).first->second;
    }

    std::string m_purpose;
    LeftDatabases::Left m_made;
};

#endif
