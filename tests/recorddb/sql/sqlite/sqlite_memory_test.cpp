// The engine has no memory at some point.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <memory>
#include <string>

#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "temporary_folder.h"

namespace recorddb::sql {
namespace {

// How many more blocks the engine may get before one request fails; negative for no limit.
long g_allowed = -1;

sqlite3_mem_methods g_memory;

bool IsGranted() {
    return g_allowed < 0 || --g_allowed >= 0;
}

void* Allocate(int size) {
    return IsGranted() ? g_memory.xMalloc(size) : nullptr;
}

void* Reallocate(void* block, int size) {
    return IsGranted() ? g_memory.xRealloc(block, size) : nullptr;
}

const bool kTold = [] {
    sqlite3_config(SQLITE_CONFIG_GETMALLOC, &g_memory);
    sqlite3_mem_methods limited = g_memory;
    limited.xMalloc = Allocate;
    limited.xRealloc = Reallocate;
    return sqlite3_config(SQLITE_CONFIG_MALLOC, &limited) == SQLITE_OK;
}();

// Does the work with one request failing, the first one, then the second one and so on, until none
// fails; the number of requests that have.
template <typename Work>
int FailEachRequestOf(Work work) {
    for (int request = 0;; ++request) {
        g_allowed = request;
        work();
        const bool hasFailed = g_allowed < 0;
        g_allowed = -1;
        if (!hasFailed) {
            return request;
        }
    }
}

class SqliteMemory : public testing::Test {
  protected:
    void SetUp() override { ASSERT_TRUE(kTold); }

    std::string File() const { return m_folder.File("test.db"); }

    // What opening the database and reading a number as text comes to.
    std::string Answer() const {
        try {
            const auto connection = Open(File(), OpenMode::ReadWrite);
            Statement& read = connection->Prepare("SELECT size FROM thing");
            const ResetGuard guard(read);
            return read.Step() ? std::string(read.Text(0)) : "no row";
        } catch (const Error& error) {
            return error.DriverText();
        }
    }

    TemporaryFolder m_folder;
};

TEST_F(SqliteMemory, ThatIsMissingIsAnErrorAndNoEmptyText) {
    const auto made = Open(File(), OpenMode::CreateNew);
    made->ExecuteScript("CREATE TABLE thing (size INTEGER); INSERT INTO thing VALUES (12345)");
    EXPECT_GT(FailEachRequestOf([this] {
                  const std::string answer = Answer();
                  EXPECT_TRUE(answer == "12345" || answer.ends_with("out of memory")) << answer;
              }),
              50);
}

TEST_F(SqliteMemory, ThatIsMissingLetsNoDatabaseOfAnotherProgramIn) {
    const auto made = Open(File(), OpenMode::CreateNew);
    made->ExecuteScript("CREATE TABLE thing (size INTEGER); PRAGMA application_id = 12");
    EXPECT_GT(FailEachRequestOf([this] {
                  const std::string answer = Answer();
                  EXPECT_TRUE(answer.ends_with("(its application id is 12)") ||
                              answer.ends_with("out of memory"))
                      << answer;
              }),
              50);
}

}  // namespace
}  // namespace recorddb::sql
