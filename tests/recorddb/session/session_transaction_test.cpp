#include "recorddb/session.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

class SessionTransactionTest : public OnEachEngine<SessionTest> {
  protected:
    void GivenThatNobodyMayWatch(const std::string& login) {
        const std::string dbid = Row("SELECT dbid FROM \"user\" WHERE login = '" + login + "'");
        Base().GetConnection().ExecuteScript(
            "ALTER TABLE bug__watchers ADD COLUMN refused INTEGER "
            "CONSTRAINT \"no watchers\" CHECK (target <> " +
            dbid + ")");
    }

    // What another program sees.
    std::string Seen(std::string_view sql) {
        const auto other = Database::Open(Location(), Database::Mode::ReadOnly);
        return std::to_string(sql::QueryInt(other->GetConnection().Prepare(sql)).value_or(-1));
    }
};

TEST_P(SessionTransactionTest, GroupsManyCommits) {
    const auto transaction = Core().BeginTransaction();
    Given("bug", {{"title", "a"}});
    Given("bug", {{"title", "b"}});
    EXPECT_EQ(Seen("SELECT count(*) FROM bug"), "0");
    transaction->Commit();
    EXPECT_EQ(Seen("SELECT count(*) FROM bug"), "2");
    EXPECT_EQ(Core().GetStatistics().recordsCreated, 2);
}

TEST_P(SessionTransactionTest, ThatIsDroppedLeavesNothing) {
    {
        const auto transaction = Core().BeginTransaction();
        Given("bug", {{"title", "a"}});
    }
    EXPECT_EQ(Seen("SELECT count(*) FROM bug"), "0");
    EXPECT_EQ(Core().GetStatistics(), Statistics());
}

TEST_P(SessionTransactionTest, SavepointIsUndoneByItself) {
    const auto transaction = Core().BeginTransaction();
    Given("bug", {{"title", "a"}});
    {
        const auto savepoint = transaction->Savepoint();
        Given("bug", {{"title", "b"}});
        savepoint->Rollback();
        EXPECT_EQ(Core().GetStatistics().recordsCreated, 1);
    }
    {
        const auto savepoint = transaction->Savepoint();
        Given("bug", {{"title", "c"}});
        savepoint->Release();
    }
    transaction->Commit();
    EXPECT_EQ(Row("SELECT id, title FROM bug ORDER BY dbid"), "BUG00000001|a;BUG00000002|c");
    EXPECT_EQ(Core().GetStatistics().recordsCreated, 2);
}

TEST_P(SessionTransactionTest, RecordOfAnUndoneSavepointIsNotWrittenAgainByMistake) {
    const auto transaction = Core().BeginTransaction();
    AdEntityPtr bug;
    {
        const auto savepoint = transaction->Savepoint();
        bug = Given("bug", {{"title", "a"}});
    }
    Set(bug, "title", "b");
    EXPECT_EQ(CommitFault(bug), "The record of type \"bug\" with the dbid 1 is gone.");
}

TEST_P(SessionTransactionTest, DbidsOfOpenRecordsStayApartAfterARollback) {
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr first = New("bug");
    EXPECT_EQ(Value(first, "dbid"), "1");
    transaction->Savepoint()->Rollback();
    const AdEntityPtr second = New("bug");
    EXPECT_EQ(Value(second, "dbid"), "2");
    Set(first, "title", "first");
    Set(second, "title", "second");
    Save(first);
    Save(second);
}

TEST_P(SessionTransactionTest, FailingCommitOfANewRecordLeavesNothingOfItself) {
    Given("user", {{"login", "ann"}});
    Given("user", {{"login", "bob"}});
    GivenThatNobodyMayWatch("bob");
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "t");
    EXPECT_EQ(Add(bug, "watchers", "ann"), "");
    EXPECT_EQ(Add(bug, "watchers", "bob"), "");
    EXPECT_NE(CommitFault(bug).find("no watchers"), std::string::npos);
    Given("bug", {{"title", "u"}});
    transaction->Commit();
    EXPECT_EQ(Row("SELECT title FROM bug"), "u");
    EXPECT_EQ(Row("SELECT count(*) FROM bug__watchers"), "0");
    EXPECT_EQ(Core().GetStatistics().recordsCreated, 1 + 2);
}

TEST_P(SessionTransactionTest, FailingCommitOfAnExistingRecordLeavesNothingOfItself) {
    Given("user", {{"login", "ann"}});
    Given("user", {{"login", "bob"}});
    Given("bug", {{"title", "t"}});
    GivenThatNobodyMayWatch("bob");
    const auto transaction = Core().BeginTransaction();
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "title", "u");
    EXPECT_EQ(Add(bug, "watchers", "ann"), "");
    EXPECT_EQ(Add(bug, "watchers", "bob"), "");
    EXPECT_NE(CommitFault(bug).find("no watchers"), std::string::npos);
    transaction->Commit();
    EXPECT_EQ(Row("SELECT title, zt_version FROM bug"), "t|1");
    EXPECT_EQ(Row("SELECT count(*) FROM bug__watchers"), "0");
}

TEST_P(SessionTransactionTest, EverythingIsRefusedAfterAFailureUntilItEnds) {
    const AdEntityPtr bug = Given("bug", {{"title", "t"}});
    auto transaction = Core().BeginTransaction();
    const std::string searched = LayoutOn(GetParam()) == Layout::Sharded ? "zt_key" : "\"user\"";
    Base().GetConnection().ExecuteScript("ALTER TABLE " + searched + " RENAME TO hidden");
    EXPECT_NE(Thrown([&] { Refusal(bug, "owner", "ann"); }), "");
    EXPECT_NE(Thrown([&] { CommitFault(bug); }), "");
    EXPECT_NE(Thrown([&] { New("bug"); }), "");
    transaction.reset();
    EXPECT_NE(Refusal(bug, "owner", "ann"), "");
    Save(bug);
}

TEST_P(SessionTransactionTest, OnlyOneIsOpenAtATime) {
    const auto transaction = Core().BeginTransaction();
    EXPECT_THROW(Core().BeginTransaction(), std::logic_error);
}

ON_EACH_LAYOUT(SessionTransactionTest);

}  // namespace

}  // namespace recorddb
