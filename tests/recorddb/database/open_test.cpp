#include <gmock/gmock.h>
#include <sys/stat.h>

#include <vector>

#include "ordinary_user.h"
#include "recorddb/sql.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

class OpenTest : public SqlTest {
  protected:
    void Close() { m_connection.reset(); }

    void SetMode(std::filesystem::perms folder, std::filesystem::perms file) const {
        std::filesystem::permissions(Path(), file);
        std::filesystem::permissions(m_folder.Path(), folder);
    }

    std::string Pragma(const std::string& name) {
        const auto statement = m_connection->PrepareOwn("PRAGMA " + name);
        return statement->Step() ? std::string(statement->Text(0)) : "";
    }

    static constexpr auto kReadable = static_cast<std::filesystem::perms>(0444);
    static constexpr auto kWritable = static_cast<std::filesystem::perms>(0666);
    static constexpr auto kClosedFolder = static_cast<std::filesystem::perms>(0555);
    static constexpr auto kOpenFolder = static_cast<std::filesystem::perms>(0777);
};

TEST_F(OpenTest, EveryConnectionHasTheSameSettings) {
    for (const OpenMode mode : {OpenMode::ReadWrite, OpenMode::ReadOnly}) {
        Close();
        m_connection = Open(Path(), mode);
        EXPECT_EQ(Pragma("journal_mode"), "wal");
        EXPECT_EQ(Pragma("foreign_keys"), "1");
        EXPECT_EQ(Pragma("synchronous"), "1");
        EXPECT_EQ(Pragma("temp_store"), "2");
        EXPECT_EQ(Pragma("cache_size"), "-32768");
        EXPECT_EQ(Pragma("busy_timeout"), "10000");
        EXPECT_EQ(Pragma("wal_autocheckpoint"), "10000");
    }
}

TEST_F(OpenTest, ReadOnlyInAFolderThatMayNotBeWrittenToIsRefusedWithAdvice) {
    Insert("a");
    Close();
    SetMode(kClosedFolder, kReadable);
    {
        const OrdinaryUser user;
        const Error error = ErrorOf([this] { Open(Path(), OpenMode::ReadOnly); });
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_THAT(error.DriverText(), AllOf(HasSubstr(Path()), HasSubstr("--immutable")));
    }
    SetMode(kOpenFolder, kWritable);
}

TEST_F(OpenTest, ImmutableInAFolderThatMayNotBeWrittenTo) {
    Insert("a");
    Close();
    const std::string odd = m_folder.File("50% ?#&.db");
    std::filesystem::rename(Path(), odd);
    for (const std::filesystem::perms file : {kReadable, kWritable}) {
        std::filesystem::permissions(odd, file);
        std::filesystem::permissions(m_folder.Path(), kClosedFolder);
        {
            const OrdinaryUser user;
            m_connection = Open(odd, OpenMode::Immutable);
            EXPECT_TRUE(m_connection->IsReadOnly());
            EXPECT_EQ(Count(), 1);
            Close();
        }
        std::filesystem::permissions(m_folder.Path(), kOpenFolder);
    }
}

// A database whose newest row stands in the log only, in a folder of its own.
class LeftLogTest : public OpenTest {
  protected:
    LeftLogTest() {
        Insert("a");
        std::filesystem::create_directory(Folder());
        for (const char* const suffix : {"", "-wal"}) {
            std::filesystem::copy_file(Path() + suffix, Copy() + suffix);
        }
        Close();
        std::filesystem::permissions(m_folder.Path(), kOpenFolder);
    }
    ~LeftLogTest() override { std::filesystem::permissions(Folder(), kOpenFolder); }

    std::filesystem::path Folder() const { return m_folder.Path() / "left"; }
    std::string Copy() const { return (Folder() / "copy.db").string(); }

    // A link from elsewhere, beside which there is no log.
    std::string Link() const {
        const std::string link = m_folder.File("link.db");
        std::filesystem::create_symlink(Copy(), link);
        return link;
    }
};

TEST_F(LeftLogTest, IsReadThroughALink) {
    m_connection = Open(Link(), OpenMode::ReadOnly);
    EXPECT_EQ(Count(), 1);
}

TEST_F(LeftLogTest, IsNotLeftOutThroughALinkToAFolderThatMayNotBeWrittenTo) {
    const std::string link = Link();
    std::filesystem::permissions(Folder(), kClosedFolder);
    const OrdinaryUser user;
    const Error error = ErrorOf([&link] { Open(link, OpenMode::ReadOnly); });
    EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
    EXPECT_THAT(error.DriverText(), AllOf(HasSubstr(link), HasSubstr("copy.db-wal")));
}

TEST_F(LeftLogTest, IsNotLeftOutByReadingAsImmutable) {
    for (const std::string& name : {Copy(), Link()}) {
        const Error error = ErrorOf([&name] { Open(name, OpenMode::Immutable); });
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_THAT(error.DriverText(), HasSubstr("copy.db-wal"));
    }
}

TEST_F(OpenTest, DatabaseOfAnotherProgramIsRefused) {
    m_connection->ExecuteScript("PRAGMA application_id = 1234");
    Close();
    for (const OpenMode mode : {OpenMode::ReadOnly, OpenMode::Immutable, OpenMode::ReadWrite}) {
        const Error error = ErrorOf([this, mode] { Open(Path(), mode); });
        EXPECT_EQ(error.Kind(), ErrorKind::NotADatabase);
        EXPECT_THAT(error.DriverText(), HasSubstr("another program (its application id is 1234)"));
    }
}

TEST_F(OpenTest, DatabaseHasTheApplicationIdOrNone) {
    EXPECT_EQ(Pragma("application_id"), std::to_string(0x5A545244));
    m_connection->ExecuteScript("PRAGMA application_id = 0");
    Close();
    EXPECT_NO_THROW(Open(Path(), OpenMode::ReadWrite));
}

TEST_F(OpenTest, TriggersDoNotRunAndViewsCannotBeRead) {
    m_connection->ExecuteScript(
        "CREATE TRIGGER copy AFTER INSERT ON thing BEGIN "
        "INSERT INTO thing (name) VALUES ('more'); END;"
        "CREATE VIEW seen AS SELECT name FROM thing;"
        "CREATE VIEW endless AS WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n) "
        "SELECT i FROM n");
    for (const OpenMode mode : {OpenMode::ReadWrite, OpenMode::ReadOnly}) {
        Close();
        m_connection = Open(Path(), mode);
        EXPECT_EQ(Pragma("trusted_schema"), "0");
        EXPECT_EQ(Pragma("cell_size_check"), "1");
        EXPECT_THAT(
            std::string(ErrorOf([this] { m_connection->PrepareOwn("SELECT * FROM seen"); }).what()),
            HasSubstr("access to view \"seen\" prohibited"));
        EXPECT_THROW(m_connection->PrepareOwn("SELECT i FROM endless"), Error);
    }
    m_connection = Open(Path(), OpenMode::ReadWrite);
    Insert("one");
    EXPECT_EQ(Count(), 1);
}

TEST_F(OpenTest, OnlyATableThatHoldsItsRowsItselfIsOne) {
    m_connection->ExecuteScript(
        "CREATE VIEW seen AS SELECT 1;"
        "CREATE TABLE computed (a INTEGER, b INTEGER AS (a + 1));"
        "CREATE VIRTUAL TABLE told USING fts5(text)");
    EXPECT_TRUE(m_connection->HasTable("THING"));
    for (const char* const name : {"seen", "computed", "told", "nothing"}) {
        EXPECT_FALSE(m_connection->HasTable(name)) << name;
    }
}

TEST_F(OpenTest, ErrorsShowTheBeginningOfAStatementOnly) {
    const std::string script = "SELECT nothing_of_that_name" + std::string(100'000, ' ');
    const Error error = ErrorOf([&] { m_connection->ExecuteScript(script); });
    EXPECT_THAT(error.what(), HasSubstr("[SELECT nothing_of_that_name "));
    EXPECT_LT(std::string(error.what()).size(), 500U);
}

TEST_F(OpenTest, PipeIsNoDatabase) {
    const std::string pipe = m_folder.File("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(ErrorOf([&pipe] { Open(pipe, OpenMode::ReadOnly); }).DriverText(),
                HasSubstr("it is a pipe or a device, not a file"));
}

TEST_F(OpenTest, FileWithSeveralNamesIsReadOnlyWhereNothingWritesToIt) {
    Close();
    const std::string other = m_folder.File("other.db");
    std::filesystem::create_hard_link(Path(), other);
    for (const OpenMode mode : {OpenMode::ReadWrite, OpenMode::ReadOnly}) {
        EXPECT_THAT(ErrorOf([&] { Open(other, mode); }).DriverText(),
                    HasSubstr("the file has 2 names (hard links)"));
    }
    EXPECT_NO_THROW(Open(other, OpenMode::Immutable));
    std::filesystem::remove(Path());
    EXPECT_NO_THROW(Open(other, OpenMode::ReadWrite));
}

TEST_F(OpenTest, ReadWriteOfAReadOnlyFileIsRefused) {
    Close();
    SetMode(kOpenFolder, kReadable);
    const OrdinaryUser user;
    const Error error = ErrorOf([this] { Open(Path(), OpenMode::ReadWrite); });
    EXPECT_EQ(error.Kind(), ErrorKind::ReadOnly);
    EXPECT_THAT(error.what(), HasSubstr(Path()));
}

TEST_F(OpenTest, CreationInAFolderThatMayNotBeWrittenToIsRefused) {
    SetMode(kClosedFolder, kWritable);
    {
        const OrdinaryUser user;
        const Error error = ErrorOf([this] { Open(m_folder.File("new.db"), OpenMode::CreateNew); });
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_THAT(error.what(), HasSubstr("new.db"));
    }
    SetMode(kOpenFolder, kWritable);
}

TEST_F(OpenTest, CreationRefusesAnExistingFile) {
    const Error error = ErrorOf([this] { Open(Path(), OpenMode::CreateNew); });
    EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
}

TEST_F(OpenTest, EmptyNameIsRefused) {
    EXPECT_EQ(ErrorOf([] { Open("", OpenMode::CreateNew); }).Kind(), ErrorKind::CannotOpen);
}

TEST_F(OpenTest, NamesThatMeanSomethingElseToTheEngineAreThoseOfFiles) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    const std::vector<std::string> names = {":memory:", "file:new.db?mode=memory", "file:x.db"};
    for (const std::string& name : names) {
        Open(name, OpenMode::CreateNew);
        Open(name, OpenMode::ReadOnly);
    }
    std::filesystem::current_path(before);
    for (const std::string& name : names) {
        EXPECT_TRUE(std::filesystem::exists(m_folder.File(name))) << name;
    }
}

TEST_F(OpenTest, DamagedFileIsReported) {
    for (int row = 0; row < 2000; ++row) {
        Insert("name " + std::to_string(row));
    }
    Close();
    {
        std::fstream file(Path(), std::ios::in | std::ios::out | std::ios::binary);
        file.seekp(2 * 4096);
        file << std::string(3 * 4096, '\x7F');
    }
    m_connection = Open(Path(), OpenMode::ReadWrite);
    const Error error = ErrorOf([this] {
        const auto select = m_connection->PrepareOwn("SELECT name FROM thing NOT INDEXED");
        while (select->Step()) {
        }
    });
    EXPECT_EQ(error.Kind(), ErrorKind::Corrupt);
}

TEST_F(OpenTest, FullDatabaseIsReported) {
    m_connection->ExecuteScript("PRAGMA max_page_count = 4");
    const std::string big(10'000, 'x');
    EXPECT_EQ(ErrorOf([this, &big] { Insert(big); }).Kind(), ErrorKind::DiskFull);
}

TEST_F(OpenTest, AScratchDatabaseIsEmptyAndItsOwn) {
    const auto first = OpenScratch();
    const auto second = OpenScratch();
    first->ExecuteScript("CREATE TABLE t (x INTEGER)");
    EXPECT_TRUE(first->HasTable("t"));
    EXPECT_FALSE(second->HasTable("t"));
}

TEST_F(OpenTest, AScratchDatabaseCanBeRolledBackWhereThatIsAskedFor) {
    const auto scratch = OpenScratch(Undoing::Possible);
    scratch->ExecuteScript("CREATE TABLE t (x INTEGER)");
    {
        const Transaction undone(*scratch);
        scratch->ExecuteScript("INSERT INTO t VALUES (1)");
    }
    EXPECT_EQ(QueryInt(scratch->Prepare("SELECT count(*) FROM t")), 0);
}

TEST_F(OpenTest, AScratchDatabaseSpillsToDisk) {
    m_connection = OpenScratch();
    EXPECT_EQ(Pragma("temp_store"), "1");
    EXPECT_EQ(Pragma("cache_size"), "-4096");
    EXPECT_EQ(Pragma("synchronous"), "0");
}

}  // namespace

}  // namespace recorddb::sql
