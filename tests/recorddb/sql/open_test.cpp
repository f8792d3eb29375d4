#include "recorddb/sql/open.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using ::testing::HasSubstr;

// Lets the super-user, whom no permission stops, act as nobody.
class OrdinaryUser {
  public:
    OrdinaryUser() : m_before(geteuid()) {
        if (m_before == 0 && seteuid(65534) != 0) {
            throw std::runtime_error("cannot act as another user");
        }
    }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;
    ~OrdinaryUser() {
        if (seteuid(m_before) != 0) {
            std::abort();
        }
    }

  private:
    uid_t m_before;
};

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

    static constexpr auto readable = static_cast<std::filesystem::perms>(0444);
    static constexpr auto writable = static_cast<std::filesystem::perms>(0666);
    static constexpr auto closedFolder = static_cast<std::filesystem::perms>(0555);
    static constexpr auto openFolder = static_cast<std::filesystem::perms>(0777);
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

TEST_F(OpenTest, ReadOnlyInAFolderThatMayNotBeWrittenTo) {
    Insert("a");
    Close();
    SetMode(closedFolder, readable);
    {
        const OrdinaryUser user;
        m_connection = Open(Path(), OpenMode::ReadOnly);
        EXPECT_EQ(Count(), 1);
        Close();
    }
    SetMode(openFolder, writable);
}

TEST_F(OpenTest, FileNamesWithOddCharactersWorkInSuchAFolderToo) {
    Insert("a");
    Close();
    const std::string odd = m_folder.File("50% ?#&.db");
    std::filesystem::rename(Path(), odd);
    std::filesystem::permissions(m_folder.Path(), closedFolder);
    {
        const OrdinaryUser user;
        m_connection = Open(odd, OpenMode::ReadOnly);
        EXPECT_EQ(Count(), 1);
        Close();
    }
    std::filesystem::permissions(m_folder.Path(), openFolder);
}

TEST_F(OpenTest, ReadWriteOfAReadOnlyFileIsRefused) {
    Close();
    SetMode(openFolder, readable);
    const OrdinaryUser user;
    const Error error = ErrorOf([this] { Open(Path(), OpenMode::ReadWrite); });
    EXPECT_EQ(error.Kind(), ErrorKind::ReadOnly);
    EXPECT_THAT(error.what(), HasSubstr(Path()));
}

TEST_F(OpenTest, CreationInAFolderThatMayNotBeWrittenToIsRefused) {
    SetMode(closedFolder, writable);
    {
        const OrdinaryUser user;
        const Error error = ErrorOf([this] { Open(m_folder.File("new.db"), OpenMode::CreateNew); });
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_THAT(error.what(), HasSubstr("new.db"));
    }
    SetMode(openFolder, writable);
}

TEST_F(OpenTest, CreationRefusesAnExistingFile) {
    const Error error = ErrorOf([this] { Open(Path(), OpenMode::CreateNew); });
    EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
}

TEST_F(OpenTest, EmptyNameIsRefused) {
    EXPECT_EQ(ErrorOf([] { Open("", OpenMode::CreateNew); }).Kind(), ErrorKind::CannotOpen);
}

TEST_F(OpenTest, NameThatMeansMemoryToTheEngineIsThatOfAFile) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(m_folder.Path());
    Open(":memory:", OpenMode::CreateNew);
    std::filesystem::current_path(before);
    EXPECT_TRUE(std::filesystem::exists(m_folder.File(":memory:")));
}

TEST_F(OpenTest, DamagedFileIsTold) {
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

TEST_F(OpenTest, FullDatabaseIsTold) {
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

TEST_F(OpenTest, AScratchDatabaseSpillsToDisk) {
    m_connection = OpenScratch();
    EXPECT_EQ(Pragma("temp_store"), "1");
    EXPECT_EQ(Pragma("cache_size"), "-4096");
    EXPECT_EQ(Pragma("synchronous"), "0");
}

}  // namespace

}  // namespace recorddb::sql
