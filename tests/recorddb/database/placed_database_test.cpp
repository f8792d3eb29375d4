// What holds of databases wherever they stand.
#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

#include "engines.h"
#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "recorddb/model/names.h"
#include "recorddb/schema.h"
#include "recorddb/sql.h"
#include "sample_schema.h"
#include "temporary_folder.h"

namespace recorddb {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

// A place for a database, and what is made there.
class PlacedDatabase : public testing::Test {
  protected:
    explicit PlacedDatabase(Engine engine) : m_place(engine, m_folder.File("tracker.db")) {}

    const std::string& Path() const { return m_place.Location(); }
    bool IsFile() const { return m_place.IsFile(); }

    void GivenDatabase() const {
        Database::Create(Path(), schema::ReadSchema(kSampleSchema, "sample.yaml"));
    }

    // On a server, in the schema as well when there is no database yet.
    void GivenSql(std::string_view script) const {
        sql::Open(Path(), sql::OpenMode::ReadWrite)->ExecuteScript(script);
    }

    bool IsAnythingThere() const {
        if (IsFile()) {
            return m_folder.FileCount() > 0;
        }
        sql::Statement& find =
            DatabasePlace::Server().Prepare("SELECT count(*) FROM pg_namespace WHERE nspname = $1");
        find.BindAll(m_place.Schema());
        return sql::QueryInt(find) != 0;
    }

    void Remove() const {
        std::filesystem::remove(m_folder.File("tracker.db"));
        m_place.DropSchema();
    }

    template <typename Function>
    static void ExpectProblemOf(Function function, DatabaseError::Problem problem,
                                const testing::Matcher<std::string>& text) {
        try {
            function();
            ADD_FAILURE() << "no error";
        } catch (const DatabaseError& error) {
            EXPECT_EQ(error.GetProblem(), problem);
            EXPECT_THAT(error.what(), text);
        }
    }

    void ExpectProblem(Database::Mode mode, DatabaseError::Problem problem,
                       const testing::Matcher<std::string>& text) const {
        ExpectProblemOf([&] { Database::Open(Path(), mode); }, problem, text);
    }

    TemporaryFolder m_folder;
    DatabasePlace m_place;
};

class PlacedDatabaseTest : public OnEachEngine<PlacedDatabase> {};

ON_EACH_ENGINE(PlacedDatabaseTest);

TEST_P(PlacedDatabaseTest, ReopenedDatabaseHasTheSchemaItWasMadeFrom) {
    GivenDatabase();
    const auto database = Database::Open(Path(), Database::Mode::ReadWrite);
    EXPECT_EQ(database->GetSchema().Text(), kSampleSchema);
    EXPECT_EQ(database->GetSchema().Types().size(), 3U);
}

TEST_P(PlacedDatabaseTest, NewerFormatIsRefusedNamingExpectedAndFound) {
    GivenDatabase();
    GivenSql("UPDATE zt_schema SET format_version = 7, oldest_readable = 5, newest_readable = 7");
    ExpectProblem(Database::Mode::ReadOnly, DatabaseError::Problem::FormatTooNew,
                  AllOf(HasSubstr("newer version"), HasSubstr("its format is 7"),
                        HasSubstr("knows formats up to 3")));
}

TEST_P(PlacedDatabaseTest, NewerFormatThatThisProgramCanUseIsOpened) {
    GivenDatabase();
    GivenSql("UPDATE zt_schema SET format_version = 4, oldest_readable = 3, newest_readable = 4");
    EXPECT_NO_THROW(Database::Open(Path(), Database::Mode::ReadOnly));
}

TEST_P(PlacedDatabaseTest, OlderFormatIsRefusedNamingExpectedAndFound) {
    GivenDatabase();
    GivenSql("UPDATE zt_schema SET format_version = 0, oldest_readable = 0, newest_readable = 0");
    ExpectProblem(Database::Mode::ReadOnly, DatabaseError::Problem::FormatTooOld,
                  AllOf(HasSubstr("its format is 0"), HasSubstr("knows formats from 3")));
}

TEST_P(PlacedDatabaseTest, ViewInThePlaceOfATableIsRefused) {
    for (const std::string table : {"bug", "bug__watchers", "zt_journal"}) {
        Remove();
        GivenDatabase();
        GivenSql(
            fmt::format("{} {}; CREATE VIEW {} AS WITH RECURSIVE n (dbid) AS (SELECT 1 UNION ALL "
                        "SELECT dbid + 1 FROM n) SELECT dbid FROM n",
                        IsFile() ? "PRAGMA foreign_keys = OFF; DROP TABLE" : "DROP TABLE",
                        IsFile() ? table : table + " CASCADE", table));
        for (const Database::Mode mode : {Database::Mode::ReadOnly, Database::Mode::ReadWrite}) {
            ExpectProblem(mode, DatabaseError::Problem::TablesChanged,
                          AllOf(HasSubstr(sql::ShownLocation(Path())),
                                HasSubstr("\"" + table + "\" is not there, or")));
        }
    }
}

TEST_P(PlacedDatabaseTest, FailedCreationLeavesNothingBehind) {
    schema::RecordType twice;
    twice.id = 1;
    twice.name = "twice";
    twice.fields.push_back({.name = "dbid", .kind = schema::FieldKind::DbId});
    twice.key = {0};
    const schema::Schema impossible({twice, twice}, "");
    EXPECT_THROW(Database::Create(Path(), impossible), sql::Error);
    EXPECT_FALSE(IsAnythingThere());
    GivenDatabase();
    EXPECT_TRUE(IsAnythingThere());
}

TEST_P(PlacedDatabaseTest, ReadOnlyDatabaseRefusesToWrite) {
    GivenDatabase();
    const auto database = Database::Open(Path(), Database::Mode::ReadOnly);
    const auto transaction = database->Begin();
    try {
        database->GetConnection().Prepare("DELETE FROM zt_journal").Execute();
        ADD_FAILURE() << "deleted";
    } catch (const sql::Error& error) {
        EXPECT_EQ(error.Kind(), sql::ErrorKind::ReadOnly);
    }
}

TEST_P(PlacedDatabaseTest, UncommittedTransactionLeavesNothing) {
    GivenDatabase();
    const auto database = Database::Open(Path(), Database::Mode::ReadWrite);
    {
        const auto transaction = database->Begin();
        database->GetJournal().BeginRun({"a", "b"}, "x");
    }
    EXPECT_FALSE(database->GetJournal().Find({"a", "b"}).has_value());
}

// A server cuts what is longer; names that differ at their end would then be one.
TEST_P(PlacedDatabaseTest, LongestNamesAreKeptWhole) {
    const auto named = [](char end, std::size_t length) {
        return std::string(length - 1, 'n') + end;
    };
    std::string yaml = "record_types:\n";
    for (const char type : {'a', 'b'}) {
        // A list's table is named after both: 30 and 31 characters, and two between them.
        yaml += "  " + named(type, 30) + ":\n    key: [" + named('a', 63) + "]\n    fields:\n";
        for (const char field : {'a', 'b'}) {
            yaml += "      " + named(field, 63) + ": {type: text, unique: true}\n      " +
                    named(field, 31) + ": {type: reference_list, to: " + named('a', 30) +
                    "}\n      " + named(field, 62) + ": {type: reference, to: " + named('b', 30) +
                    "}\n";
        }
    }
    Database::Create(Path(), schema::ReadSchema(yaml, "long.yaml"));
    const auto database = Database::Open(Path(), Database::Mode::ReadWrite);
    for (const char type : {'a', 'b'}) {
        const schema::RecordType& found = *database->GetSchema().FindType(named(type, 30));
        for (const char field : {'a', 'b'}) {
            EXPECT_TRUE(
                database->GetConnection().HasTable(named(type, 30) + "__" + named(field, 31)));
            database->EnsureSearchIndex(found, *found.FindField(named(field, 62)));
        }
        database->GetConnection().ExecuteScript("INSERT INTO " + named(type, 30) + " (dbid, " +
                                                named('a', 63) + ", " + named('b', 63) +
                                                ") VALUES (1, 'x', 'y')");
    }
}

TEST_P(PlacedDatabaseTest, DatabaseOfAnotherProgramIsRefused) {
    {
        const auto connection = sql::Open(Path(), sql::OpenMode::CreateNew);
        sql::Transaction transaction(*connection);
        connection->ExecuteScript("CREATE TABLE other (a TEXT)");
        transaction.Commit();
    }
    for (const Database::Mode mode : {Database::Mode::ReadOnly, Database::Mode::ReadWrite}) {
        ExpectProblem(mode, DatabaseError::Problem::NotARecordDatabase,
                      HasSubstr(sql::ShownLocation(Path())));
    }
}

// Where a schema of a server has something else in it.
class SchemaInUseTest : public PlacedDatabase {
  protected:
    SchemaInUseTest() : PlacedDatabase(Engine::Postgres) {}

    void ExpectRefusal(std::string_view text) const {
        ExpectProblemOf([this] { GivenDatabase(); }, DatabaseError::Problem::FileExists,
                        HasSubstr(std::string(text)));
    }
};

TEST_F(SchemaInUseTest, RecordDatabaseThatIsThereIsKept) {
    GivenDatabase();
    GivenSql("INSERT INTO \"user\" (dbid, login) VALUES (1, 'precious')");
    ExpectRefusal("there is a record database in this schema already; name another schema");
    const auto connection = sql::Open(Path(), sql::OpenMode::ReadOnly);
    EXPECT_EQ(sql::QueryInt(connection->Prepare("SELECT count(*) FROM \"user\"")), 1);
}

TEST_F(SchemaInUseTest, TableOfOneOfTheNamesIsKept) {
    for (const std::string table : {"bug", "bug__watchers", "zt_history"}) {
        Remove();
        DatabasePlace::Server().ExecuteScript("CREATE SCHEMA " + m_place.Schema() +
                                              "; CREATE TABLE " + m_place.Schema() + "." + table +
                                              " AS SELECT 'precious' AS a");
        ExpectRefusal("there is a table \"" + table + "\" in this schema already");
        const auto connection = sql::Open(Path(), sql::OpenMode::ReadOnly);
        EXPECT_EQ(sql::QueryInt(connection->Prepare("SELECT count(*) FROM " + table)), 1);
        EXPECT_FALSE(connection->HasTable("zt_schema"));
    }
}

TEST_F(SchemaInUseTest, TablesOfOtherNamesAreLeftBesideTheDatabase) {
    DatabasePlace::Server().ExecuteScript("CREATE SCHEMA " + m_place.Schema() + "; CREATE TABLE " +
                                          m_place.Schema() + ".other AS SELECT 'precious' AS a");
    GivenDatabase();
    const auto database = Database::Open(Path(), Database::Mode::ReadOnly);
    EXPECT_EQ(sql::QueryInt(database->GetConnection().Prepare("SELECT count(*) FROM other")), 1);
}

// A table of a server has at most 1600 columns, of which two are the dbid and the version.
TEST_F(SchemaInUseTest, MoreFieldsThanTheServerHasColumnsAreRefused) {
    const auto create = [this](int fields) {
        std::string yaml = "record_types:\n  wide:\n    key: [f1]\n    fields:\n";
        for (int field = 1; field <= fields; ++field) {
            yaml += "      f" + std::to_string(field) + ": {type: text}\n";
        }
        Database::Create(Path(), schema::ReadSchema(yaml, "wide.yaml"));
    };
    ExpectProblemOf([&] { create(1599); }, DatabaseError::Problem::TooManyColumns,
                    AllOf(HasSubstr("wide"), HasSubstr("1600 at most")));
    EXPECT_FALSE(IsAnythingThere());
    create(1598);
    EXPECT_TRUE(IsAnythingThere());
}

}  // namespace

}  // namespace recorddb
