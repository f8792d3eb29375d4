#include "recorddb/database.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

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

class DatabaseTest : public testing::Test {
  protected:
    std::string Path() const { return m_folder.File("tracker.db"); }

    void GivenDatabase() const {
        Database::Create(Path(), schema::ReadSchema(kSampleSchema, "sample.yaml"));
    }

    void GivenSql(std::string_view script) const {
        sql::Open(Path(), sql::OpenMode::ReadWrite)->ExecuteScript(script);
    }

    void ExpectProblem(Database::Mode mode, DatabaseError::Problem problem,
                       const testing::Matcher<std::string>& text) const {
        try {
            Database::Open(Path(), mode);
            ADD_FAILURE() << "opened";
        } catch (const DatabaseError& error) {
            EXPECT_EQ(error.GetProblem(), problem);
            EXPECT_THAT(error.what(), text);
        }
    }

    void ExpectSqlError(Database::Mode mode, sql::ErrorKind kind,
                        const testing::Matcher<std::string>& text) const {
        try {
            Database::Open(Path(), mode);
            ADD_FAILURE() << "opened";
        } catch (const sql::Error& error) {
            EXPECT_EQ(error.Kind(), kind) << error.what();
            EXPECT_THAT(error.what(), text);
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(DatabaseTest, CreationLeavesOneFile) {
    GivenDatabase();
    EXPECT_EQ(m_folder.FileCount(), 1U);
}

TEST_F(DatabaseTest, CreationRefusesAnExistingFileAndKeepsIt) {
    m_folder.Write("tracker.db", "precious");
    try {
        GivenDatabase();
        ADD_FAILURE() << "created";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.GetProblem(), DatabaseError::Problem::FileExists);
        EXPECT_THAT(error.what(), AllOf(HasSubstr(Path()), HasSubstr("exists already")));
    }
    EXPECT_EQ(std::filesystem::file_size(Path()), 8U);
    EXPECT_EQ(m_folder.FileCount(), 1U);
}

TEST_F(DatabaseTest, CreationKeepsFilesOfOthersWhateverTheirNames) {
    const std::string other = "tracker.db.new-" + std::to_string(getpid());
    for (const char* const suffix : {"", "-wal", "-journal"}) {
        m_folder.Write(other + suffix, "precious");
    }
    GivenDatabase();
    for (const char* const suffix : {"", "-wal", "-journal"}) {
        EXPECT_EQ(std::filesystem::file_size(m_folder.File(other + suffix)), 8U) << suffix;
    }
    EXPECT_EQ(m_folder.FileCount(), 4U);
}

TEST_F(DatabaseTest, MissingFileIsNotCreatedByOpening) {
    ExpectSqlError(Database::Mode::ReadWrite, sql::ErrorKind::CannotOpen,
                   AllOf(HasSubstr(Path()), HasSubstr("there is no such file")));
    EXPECT_EQ(m_folder.FileCount(), 0U);
}

TEST_F(DatabaseTest, FileThatIsNoDatabaseIsRefusedByName) {
    m_folder.Write("tracker.db", std::string(5000, 'x'));
    ExpectSqlError(Database::Mode::ReadWrite, sql::ErrorKind::NotADatabase, HasSubstr(Path()));
    ExpectSqlError(Database::Mode::ReadOnly, sql::ErrorKind::NotADatabase, HasSubstr(Path()));
}

TEST_F(DatabaseTest, FolderIsRefused) {
    std::filesystem::create_directory(Path());
    ExpectSqlError(Database::Mode::ReadOnly, sql::ErrorKind::CannotOpen, HasSubstr("directory"));
}

TEST_F(DatabaseTest, DatabaseOfAnotherKindIsRefusedAndNotChanged) {
    sql::Open(Path(), sql::OpenMode::CreateNew)
        ->ExecuteScript("PRAGMA journal_mode = DELETE; CREATE TABLE other (a TEXT)");
    const auto before = std::filesystem::last_write_time(Path());
    ExpectProblem(Database::Mode::ReadWrite, DatabaseError::Problem::NotARecordDatabase,
                  HasSubstr("a database of another program"));
    EXPECT_EQ(std::filesystem::last_write_time(Path()), before);
}

TEST_F(DatabaseTest, EmptyFileIsNoRecordDatabase) {
    m_folder.Write("tracker.db", "");
    ExpectProblem(Database::Mode::ReadWrite, DatabaseError::Problem::NotARecordDatabase,
                  HasSubstr(Path()));
}

TEST_F(DatabaseTest, DatabaseWithoutAnApplicationIdIsOpened) {
    GivenDatabase();
    GivenSql("PRAGMA application_id = 0");
    EXPECT_NO_THROW(Database::Open(Path(), Database::Mode::ReadWrite));
}

TEST_F(DatabaseTest, DatabaseWithAnotherApplicationIdIsRefused) {
    GivenDatabase();
    GivenSql("PRAGMA application_id = 1");
    ExpectSqlError(Database::Mode::ReadWrite, sql::ErrorKind::NotADatabase,
                   HasSubstr("another program"));
}

TEST_F(DatabaseTest, SchemaOfAsManyFieldsAsThereMayBeIsTaken) {
    std::string yaml = "record_types:\n  wide:\n    key: [f1]\n    fields:\n";
    for (std::size_t field = 1; field <= schema::kMaxColumnFields; ++field) {
        yaml += "      f" + std::to_string(field) + ": {type: text}\n";
    }
    yaml += "  keyed:\n    key: [k1";
    for (std::size_t part = 2; part <= schema::kMaxKeyFields; ++part) {
        yaml += ", k" + std::to_string(part);
    }
    yaml += "]\n    fields:\n";
    for (std::size_t part = 1; part <= schema::kMaxKeyFields; ++part) {
        yaml += "      k" + std::to_string(part) + ": {type: text}\n";
    }
    Database::Create(Path(), schema::ReadSchema(yaml, "wide.yaml"));
    const auto database = Database::Open(Path(), Database::Mode::ReadOnly);
    EXPECT_EQ(database->GetSchema().Types().front().fields.size(), schema::kMaxColumnFields + 1);
}

TEST_F(DatabaseTest, ServerThatIsNotThereIsToldWithoutThePassword) {
    const std::string host = m_folder.File("no_socket");
    for (const std::string scheme : {"postgresql", "postgres"}) {
        const std::string url = scheme + "://me:secret@/db?host=" + host;
        try {
            Database::Create(url, schema::ReadSchema(kSampleSchema, "sample.yaml"));
            ADD_FAILURE() << "created";
        } catch (const sql::Error& error) {
            EXPECT_EQ(error.Kind(), sql::ErrorKind::CannotOpen);
            EXPECT_THAT(error.what(), AllOf(HasSubstr(host), Not(HasSubstr("secret"))));
        }
        EXPECT_THROW(Database::Open(url, Database::Mode::ReadOnly), sql::Error);
    }
}

}  // namespace

}  // namespace recorddb
