#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "temporary_folder.h"
#include "tool/commands/load_command.h"
#include "tool/commands/verify_command.h"
#include "verify/cell_changes.h"
#include "verify/silent_changes.h"

// Every column of every table of the loaded example tracker is changed, one cell at a time and in
// several ways, and rows are deleted and doubled: verify must find it, or the change stands on the
// list of those that nothing can contradict. Which rows are taken is random; ZT_SEED repeats a run
// and ZT_EVERY_CELL=1 takes all of them.

namespace tool {

namespace {

namespace fs = std::filesystem;
using recorddb::sql::OpenMode;

const fs::path kExample = ZT_EXAMPLES "/tracker";

// The example tracker, loaded once for all tests of the program.
class LoadedExample {
  public:
    static const LoadedExample& Get() {
        static const LoadedExample kExample;
        return kExample;
    }

    // Verifies a copy of the database after `sql` was done to it; says how that was found, nothing
    // when it was not. Throws sql::Error when the engine refuses SQL.
    std::optional<std::string> Verify(const std::string& sql, bool exact) const {
        const std::string copy = m_folder.File("copy.db");
        for (const char* const suffix : {"", "-wal", "-shm"}) {
            fs::remove(copy + suffix);
        }
        fs::copy_file(m_database, copy);
        {
            const auto connection = recorddb::sql::Open(copy, OpenMode::ReadWrite);
            connection->ExecuteScript("PRAGMA foreign_keys = OFF");
            connection->ExecuteScript(sql);
        }
        VerifyOptions options;
        options.database = copy;
        options.sources = {(kExample / "packets").string()};
        options.attachments = kExample / "attachments";
        options.exact = exact;
        options.quiet = true;
        std::ostringstream out;
        std::ostringstream err;
        try {
            const bool differs = RunVerify(options, out, err) != 0;
            return differs ? std::optional(err.str()) : std::nullopt;
        } catch (const std::exception& refusal) {
            return refusal.what();
        }
    }

    // True when `query` finds a row in the copy that was verified last.
    bool Answers(const std::string& query) const {
        // The record database attaches no other one, so the engine itself is asked.
        sqlite3* opened = nullptr;
        const int code = sqlite3_open(m_folder.File("copy.db").c_str(), &opened);
        const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> engine(opened, sqlite3_close);
        EXPECT_EQ(code, SQLITE_OK);
        const std::string script = fmt::format("ATTACH '{}' AS original; {}", m_database, query);
        bool found = false;
        const auto note = [](void* any, int, char**, char**) {
            *static_cast<bool*>(any) = true;
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(opened, script.c_str(), note, &found, nullptr), SQLITE_OK)
            << sqlite3_errmsg(opened) << ": " << query;
        return found;
    }

    const std::string& Database() const { return m_database; }

  private:
    LoadedExample() : m_database(m_folder.File("example.db")) {
        recorddb::Database::Create(
            m_database, recorddb::schema::ReadSchemaFile((kExample / "schema.yaml").string()));
        LoadOptions options;
        options.database = m_database;
        options.sources = {(kExample / "packets").string()};
        options.attachments = kExample / "attachments";
        options.quiet = true;
        std::ostringstream out;
        std::ostringstream err;
        EXPECT_EQ(RunLoad(options, out, err), 0) << err.str();
        // As after a record that was rejected, and loaded from another file since.
        const auto connection = recorddb::sql::Open(m_database, OpenMode::ReadWrite);
        connection->ExecuteScript(
            "INSERT INTO zt_journal_reject SELECT source_sha256, configuration_sha256, 1 "
            "FROM zt_journal WHERE source_name LIKE '%bugs.xml';"
            "UPDATE zt_journal SET rejected = 1 WHERE source_name LIKE '%bugs.xml';"
            // As when the last load stopped while a record waited for another one.
            "INSERT INTO zt_journal_waiting SELECT source_sha256, configuration_sha256, 1 "
            "FROM zt_journal WHERE source_name LIKE '%history.xml';"
            "UPDATE zt_journal SET complete = 0 WHERE source_name LIKE '%history.xml'");
    }

    TemporaryFolder m_folder;
    std::string m_database;
};

class VerifyCellsTest : public testing::Test {
  protected:
    VerifyCellsTest() {
        const char* const given = std::getenv("ZT_SEED");
        m_seed = given != nullptr ? std::stoull(given) : std::random_device()();
        m_random.seed(m_seed);
        std::cout << "ZT_SEED=" << m_seed << '\n';
        m_every = std::getenv("ZT_EVERY_CELL") != nullptr;
    }

    // Verify finds the change, or may not find it.
    void Check(const Change& change, bool exact = false) {
        std::optional<std::string> found;
        try {
            found = LoadedExample::Get().Verify(change.sql, exact);
        } catch (const recorddb::sql::Error&) {
            ++m_refused;
            return;
        }
        ++m_made;
        const SilentChange* const silent =
            found ? nullptr : FindSilentChange(change.table, change.column);
        const bool mayBe = silent != nullptr && LoadedExample::Get().Answers(fmt::format(
                                                    fmt::runtime(silent->query), change.before));
        EXPECT_TRUE(found || mayBe) << "not found: " << change.Text();
    }

    // The rows to take: one of them, or all.
    std::vector<const Row*> RowsOf(const Table& table) {
        std::vector<const Row*> rows;
        for (const Row& row : table.rows) {
            rows.push_back(&row);
        }
        if (!m_every && !rows.empty()) {
            rows = {rows[m_random() % rows.size()]};
        }
        return rows;
    }

    std::uint64_t m_seed = 0;
    std::mt19937_64 m_random;
    bool m_every = false;
    int m_made = 0;
    int m_refused = 0;  // by the engine, which keeps keys and what may not be NULL
};

TEST_F(VerifyCellsTest, NothingIsFoundWhereNothingWasChanged) {
    EXPECT_EQ(LoadedExample::Get().Verify("SELECT 1", false), std::nullopt);
    EXPECT_EQ(LoadedExample::Get().Verify("SELECT 1", true), std::nullopt);
}

TEST_F(VerifyCellsTest, EveryTableHasRowsToBeChanged) {
    for (const Table& table : ReadTables(LoadedExample::Get().Database())) {
        EXPECT_FALSE(table.rows.empty()) << table.name;
    }
}

TEST_F(VerifyCellsTest, FindsACellThatWasChanged) {
    for (const Table& table : ReadTables(LoadedExample::Get().Database())) {
        for (const std::string& column : table.columns) {
            for (const Row* const row : RowsOf(table)) {
                for (const Change& change : ChangesOf(table, *row, column, m_random)) {
                    Check(change);
                }
            }
        }
    }
    std::cout << m_made << " changes, " << m_refused << " more that the engine refused\n";
    EXPECT_GT(m_made, 300);
}

TEST_F(VerifyCellsTest, FindsARowThatWasDeleted) {
    for (const Table& table : ReadTables(LoadedExample::Get().Database())) {
        for (const Row* const row : RowsOf(table)) {
            Check({table.name, "", "is deleted", "",
                   fmt::format("DELETE FROM \"{}\" WHERE {}", table.name, table.Where(*row))});
        }
    }
    EXPECT_EQ(m_refused, 0);
}

TEST_F(VerifyCellsTest, FindsARowThatWasAddedWhereNothingElseMayBe) {
    constexpr std::pair<const char*, const char*> kAdded[] = {
        {"user", "SELECT dbid + 1000, 1, login || 'x', name, NULL"},
        {"component", "SELECT dbid + 1000, 1, name || 'x', lead"},
        {"keyword", "SELECT dbid + 1000, 1, name || 'x', meaning"},
        {"bug",
         "SELECT dbid + 1000, 1, printf('BUG%08d', dbid + 1000), state, source_id || 'x', title, "
         "description, severity, opened, votes, reporter, owner, component"},
        {"bug__keywords",
         "SELECT record, (SELECT count(*) FROM bug__keywords AS other WHERE other.record = "
         "bug__keywords.record), (SELECT max(dbid) FROM keyword)"},
        {"zt_history",
         "SELECT record_type, record, (SELECT count(*) + 1 FROM zt_history AS other WHERE "
         "other.record = zt_history.record), field, action_time, expiry_time, user_name, "
         "action_name, old_state, new_state, comments"},
        {"zt_attachment",
         "SELECT dbid + 1000, record_type, record, field, filename || 'x', filesize, description, "
         "sha256"},
        {"zt_content", "SELECT sha256, chunk + 1, x'00'"},
        {"zt_duplicate", "SELECT record_type, original, duplicate, action_time"},
        {"zt_journal",
         "SELECT configuration_sha256, source_sha256, source_name, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1"},
        {"zt_journal_reject", "SELECT source_sha256, configuration_sha256, ordinal + 1"},
        {"zt_journal_waiting", "SELECT source_sha256, configuration_sha256, ordinal + 1"},
        {"zt_record_type", "SELECT id + 1000, name || 'x', kind"},
        {"zt_schema", "SELECT *"},
    };
    for (const Table& table : ReadTables(LoadedExample::Get().Database())) {
        const auto* const added =
            std::find_if(std::begin(kAdded), std::end(kAdded),
                         [&table](const auto& other) { return table.name == other.first; });
        ASSERT_NE(added, std::end(kAdded)) << table.name;
        for (const Row* const row : RowsOf(table)) {
            Check({table.name, "", "is added", "",
                   fmt::format("INSERT INTO \"{0}\" {1} FROM \"{0}\" WHERE {2}", table.name,
                               added->second, table.Where(*row))},
                  true);
        }
    }
    EXPECT_EQ(m_refused, 0);
}

}  // namespace

}  // namespace tool
