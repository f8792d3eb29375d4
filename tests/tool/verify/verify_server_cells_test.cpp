// As in verify_cells_test.cpp, for a database on a server: a cell of every column of every table of
// the loaded example tracker is changed, and a row of every table is deleted. Which row and in
// which way is random; ZT_SEED repeats a run.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "made_database.h"
#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "tool/commands/load_command.h"
#include "tool/commands/verify_command.h"
#include "verify/silent_changes.h"

namespace tool {
namespace {

struct ServerColumn {
    std::string table;
    std::string name;
    std::string type;
    bool mayBeNull;
};

class VerifyServerCellsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
        const char* const given = std::getenv("ZT_SEED");
        const std::uint64_t seed = given != nullptr ? std::stoull(given) : std::random_device()();
        m_random.seed(seed);
        std::cout << "ZT_SEED=" << seed << '\n';
        LoadExample();
    }

    void LoadExample() {
        auto place = std::make_unique<DatabasePlace>(Engine::Postgres, "");
        const std::filesystem::path example = ZT_EXAMPLES "/tracker";
        recorddb::Database::Create(place->Location(), recorddb::schema::ReadSchemaFile(
                                                          (example / "schema.yaml").string()));
        LoadOptions load;
        load.database = place->Location();
        load.sources = {(example / "packets").string()};
        load.attachments = example / "attachments";
        load.quiet = true;
        std::ostringstream said;
        ASSERT_EQ(RunLoad(load, said, said), 0) << said.str();
        m_verify.database = load.database;
        m_verify.sources = load.sources;
        m_verify.attachments = load.attachments;
        m_verify.quiet = true;
        // With it, all rows become again what they are now.
        m_loaded = LeftDatabases::Note(std::move(place));
        m_connection = recorddb::sql::Open(m_verify.database, recorddb::sql::OpenMode::ReadWrite);
        m_connection->ExecuteScript("SET session_replication_role = replica");
    }

    std::vector<ServerColumn> Columns() {
        const auto statement = m_connection->PrepareOwn(
            "SELECT c.table_name, c.column_name, c.data_type, "
            "c.is_nullable = 'YES' FROM information_schema.columns AS c "
            "WHERE c.table_schema = current_schema() ORDER BY c.table_name, c.ordinal_position");
        std::vector<ServerColumn> columns;
        while (statement->Step()) {
            columns.push_back({std::string(statement->Text(0)), std::string(statement->Text(1)),
                               std::string(statement->Text(2)), statement->Int(3) != 0});
        }
        return columns;
    }

    // Another value for a column, as SQL.
    std::string Another(const ServerColumn& column) {
        const std::string name = recorddb::sql::Quoted(column.name);
        if (column.type == "bytea") {
            return name + " || '\\x00'::bytea";
        }
        if (column.mayBeNull && m_random() % 2 == 0) {
            return fmt::format("CASE WHEN {0} IS NULL THEN {1} END", name,
                               column.type == "text" ? "'x'" : "1");
        }
        return column.type == "text" ? fmt::format("coalesce({}, '') || 'x'", name)
                                     : fmt::format("coalesce({}, 0) + 1", name);
    }

    // Any row of a table.
    std::string Row(const std::string& table) {
        return fmt::format(
            "ctid = (SELECT ctid FROM {0} ORDER BY ctid LIMIT 1 OFFSET {1} % "
            "(SELECT count(*) FROM {0}))",
            recorddb::sql::Quoted(table), m_random() % 1000);
    }

    bool IsVerified() const {
        std::ostringstream said;
        try {
            return RunVerify(m_verify, said, said) == 0;
        } catch (const std::exception&) {
            return false;
        }
    }

    // What verify does not find after the change has to stand on the list of what nothing can
    // contradict.
    void Check(const std::string& sql, const std::string& table, const std::string& column) {
        std::int64_t changed = 0;
        try {
            changed = m_connection->PrepareOwn(sql)->Execute();
        } catch (const recorddb::sql::Error&) {
            return;  // the server keeps keys, and what may not be NULL
        }
        m_made += changed;
        EXPECT_TRUE(changed == 0 || !IsVerified() || FindSilentChange(table, column) != nullptr)
            << "not found: " << sql;
        DatabasePlace::Server().ExecuteScript(m_loaded.emptying);
    }

    std::mt19937_64 m_random;
    LeftDatabases::Left m_loaded;
    std::unique_ptr<recorddb::sql::Connection> m_connection;
    VerifyOptions m_verify;
    std::int64_t m_made = 0;
};

TEST_F(VerifyServerCellsTest, FindsACellThatWasChanged) {
    EXPECT_TRUE(IsVerified());
    for (const ServerColumn& column : Columns()) {
        Check(fmt::format("UPDATE {} SET {} = {} WHERE {}", recorddb::sql::Quoted(column.table),
                          recorddb::sql::Quoted(column.name), Another(column), Row(column.table)),
              column.table, column.name);
    }
    EXPECT_GT(m_made, 50);
    EXPECT_TRUE(IsVerified());
}

TEST_F(VerifyServerCellsTest, FindsARowThatWasDeleted) {
    std::string table;
    for (const ServerColumn& column : Columns()) {
        if (column.table != table) {
            table = column.table;
            Check(fmt::format("DELETE FROM {} WHERE {}", recorddb::sql::Quoted(table), Row(table)),
                  table, "");
        }
    }
    EXPECT_GT(m_made, 8);
    EXPECT_TRUE(IsVerified());
}

}  // namespace
}  // namespace tool
