// Records on an engine that ends a transaction after any error. What the engine refuses costs one
// record there as well, and not the transaction.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "aborting_connection.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/store/tables/search_indexes.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

using ::testing::HasSubstr;

class AbortingEngineTest : public SessionTest {
  protected:
    AbortingEngineTest() {
        Given("user", {{"login", "ann"}});
        Given("user", {{"login", "bob"}});
        UseSession(AdPtr<Session>(new Session(std::make_shared<SessionParts>(
            m_batch, Base().GetSchema(), m_indexes, SessionOptions{}))));
    }
    ~AbortingEngineTest() override { UseSession({}); }

    sql::AbortingConnection m_connection{sql::Open(Location(), sql::OpenMode::ReadWrite)};
    WriteBatch m_batch{m_connection, Base().GetSchema(), Layout::Plain};
    schema::SearchIndexes m_indexes{m_connection, Base().GetSchema()};
};

TEST_F(AbortingEngineTest, RowThatIsRefusedIsExplained) {
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr refused = New("bug");
    Set(refused, "title", "refused");
    Set(refused, "owner", "ann");
    m_connection.ExecuteScript("DELETE FROM user WHERE login = 'ann'");
    EXPECT_THAT(CommitFault(refused), HasSubstr("\"owner\""));
    Given("bug", {{"title", "next"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT id, title FROM bug"), "BUG00000001|next");
}

TEST_F(AbortingEngineTest, RowGoesWithTheListThatIsRefused) {
    m_connection.ExecuteScript(
        "ALTER TABLE bug__watchers ADD COLUMN refused INTEGER "
        "CONSTRAINT \"no watchers\" CHECK (target <> 2)");
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr refused = New("bug");
    Set(refused, "title", "refused");
    Add(refused, "watchers", "bob");
    EXPECT_THAT(CommitFault(refused), HasSubstr("no watchers"));
    Given("bug", {{"title", "next"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT title FROM bug"), "next");
}

TEST_F(AbortingEngineTest, ChangeThatIsRefusedLeavesTheRecordAsItWas) {
    Given("bug", {{"title", "before"}});
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = Open("bug", "BUG00000001");
    Set(bug, "title", "after");
    Set(bug, "owner", "ann");
    m_connection.ExecuteScript("DELETE FROM user WHERE login = 'ann'");
    EXPECT_THAT(CommitFault(bug), HasSubstr("\"owner\""));
    Given("bug", {{"title", "next"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT title FROM bug ORDER BY dbid"), "before;next");
}

}  // namespace

}  // namespace recorddb
