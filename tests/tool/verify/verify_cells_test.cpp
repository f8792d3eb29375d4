#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>
#include <cctype>
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
#include "verify/silent_changes.h"

// Every column of every table of the loaded example tracker is changed, one cell at a time and in
// several ways, and rows are deleted and doubled: verify must find it, or the change stands on the
// list of those that nothing can contradict. Which rows are taken is random; ZT_SEED repeats a run
// and ZT_EVERY_CELL=1 takes all of them.

namespace tool {

namespace {

namespace fs = std::filesystem;
using Row = std::vector<std::string>;  // SQL literals
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

struct Table {
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::string> key;  // columns that tell a row; all of them where there is no key
    std::vector<Row> rows;

    std::size_t Index(const std::string& column) const {
        return static_cast<std::size_t>(std::find(columns.begin(), columns.end(), column) -
                                        columns.begin());
    }

    // The condition that only this row meets.
    std::string Where(const Row& row) const {
        std::string condition;
        for (const std::string& column : key) {
            condition += fmt::format("{}\"{}\" IS {}", condition.empty() ? "" : " AND ", column,
                                     row[Index(column)]);
        }
        return condition;
    }
};

std::vector<Row> Select(recorddb::sql::Connection& connection, const std::string& sql) {
    const auto statement = connection.PrepareOwn(sql);
    std::vector<Row> rows;
    while (statement->Step()) {
        Row& row = rows.emplace_back();
        for (int column = 0; column < statement->ColumnCount(); ++column) {
            row.emplace_back(statement->Text(column));
        }
    }
    return rows;
}

std::vector<Table> ReadTables() {
    const auto connection =
        recorddb::sql::Open(LoadedExample::Get().Database(), OpenMode::ReadOnly);
    std::vector<Table> tables;
    for (const Row& name : Select(*connection,
                                  "SELECT name FROM sqlite_master WHERE type = 'table' "
                                  "AND name NOT LIKE 'sqlite_%' ORDER BY name")) {
        Table& table = tables.emplace_back();
        table.name = name.front();
        std::string quoted;
        for (const Row& column :
             Select(*connection,
                    fmt::format("SELECT name, pk FROM pragma_table_info('{}')", table.name))) {
            table.columns.push_back(column[0]);
            if (column[1] != "0") {
                table.key.push_back(column[0]);
            }
            quoted += fmt::format("{}quote(\"{}\")", quoted.empty() ? "" : ", ", column[0]);
        }
        if (table.key.empty()) {
            table.key = table.columns;
        }
        table.rows = Select(*connection, fmt::format("SELECT {} FROM \"{}\"", quoted, table.name));
    }
    return tables;
}

// One change of the database.
struct Change {
    std::string table;
    std::string column;  // empty: of a row as a whole
    std::string way;
    std::string before;  // what stood in the column
    std::string sql;

    std::string Text() const { return fmt::format("{}.{} {}: {}", table, column, way, sql); }
};

bool IsNumber(const std::string& literal) {
    return literal.front() == '-' || std::isdigit(static_cast<unsigned char>(literal.front())) != 0;
}

bool IsText(const std::string& literal) {
    return literal.front() == '\'';
}

bool IsBlob(const std::string& literal) {
    return literal.starts_with("X'");
}

// The literal a step further: a number plus one, a text with the next last character, a blob with
// one more byte.
std::string OneMore(const std::string& literal) {
    if (IsNumber(literal)) {
        return literal + " + 1";
    }
    if (IsText(literal)) {
        return fmt::format("substr({0}, 1, length({0}) - 1) || char(unicode(substr({0}, -1)) + 1)",
                           literal);
    }
    return IsBlob(literal) ? literal.substr(0, literal.size() - 1) + "00'" : "1";
}

std::string OfAnotherType(const std::string& literal) {
    if (IsNumber(literal)) {
        return fmt::format("'{}x'", literal);
    }
    return IsText(literal) ? fmt::format("CAST({} AS BLOB)", literal)
                           : fmt::format("CAST({} AS TEXT)", IsBlob(literal) ? literal : "'7'");
}

std::string Another(const std::string& literal) {
    if (IsNumber(literal)) {
        return literal + " + 1000";
    }
    return IsText(literal) ? literal + " || 'x'" : "'x'";
}

std::string UpdateOf(const Table& table, const Row& row, const std::string& column,
                     const std::string& value) {
    return fmt::format("UPDATE \"{}\" SET \"{}\" = {} WHERE {};", table.name, column, value,
                       table.Where(row));
}

// Exchanges two values, by way of one that stands nowhere else.
std::string SwapOf(const Table& table, Row row, const Row& other, const std::string& column) {
    const std::size_t index = table.Index(column);
    const std::string between = IsNumber(row[index]) ? "-999983" : "'a value between'";
    const std::string first = UpdateOf(table, row, column, between);
    const std::string value = row[index];
    row[index] = between;
    return first + UpdateOf(table, other, column, value) +
           UpdateOf(table, row, column, other[index]);
}

// All ways of changing one cell.
std::vector<Change> ChangesOf(const Table& table, const Row& row, const std::string& column,
                              std::mt19937_64& random) {
    const std::size_t index = table.Index(column);
    const std::string& before = row[index];
    std::vector<Change> changes;
    const auto set = [&](const char* way, const std::string& value) {
        if (value != before) {
            changes.push_back(
                {table.name, column, way, before, UpdateOf(table, row, column, value)});
        }
    };
    set("becomes NULL", "NULL");
    set("becomes empty", "''");
    set("gets another type", OfAnotherType(before));
    set("gets another value", Another(before));
    set("becomes one more", OneMore(before));
    if (IsNumber(before)) {
        set("becomes one less", before + " - 1");
    }
    std::vector<const Row*> others;
    for (const Row& other : table.rows) {
        if (other[index] != before) {
            others.push_back(&other);
        }
    }
    if (!others.empty()) {
        const Row& other = *others[random() % others.size()];
        set("gets the value of another row", other[index]);
        changes.push_back({table.name, column, "is swapped with another row", before,
                           SwapOf(table, row, other, column)});
    }
    return changes;
}

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
    for (const Table& table : ReadTables()) {
        EXPECT_FALSE(table.rows.empty()) << table.name;
    }
}

TEST_F(VerifyCellsTest, FindsACellThatWasChanged) {
    for (const Table& table : ReadTables()) {
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
    for (const Table& table : ReadTables()) {
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
    for (const Table& table : ReadTables()) {
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
