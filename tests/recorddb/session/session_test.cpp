#include "recorddb/session.h"

#include "session_fixture.h"

namespace recorddb {

namespace {

class SessionOperationsTest : public OnEachEngine<SessionTest> {};

TEST_P(SessionOperationsTest, RecordTypesAreFoundWithoutRegardToCase) {
    EXPECT_EQ(Type("BUG"), Type("bug"));
    EXPECT_EQ(Type("BUG")->GetName(), u"bug");
    EXPECT_EQ(Thrown([&] { Type("plan"); }), "There is no record type \"plan\".");
}

TEST_P(SessionOperationsTest, RecordsAreOpenedByDbidAndDisplayId) {
    Given("bug", {{"title", "t"}});
    EXPECT_EQ(Value(Core().GetEntity(Type("bug"), u"1"), "title"), "t");
    EXPECT_EQ(Value(Core().GetEntity(Type("bug"), u"BUG00000001"), "title"), "t");
}

TEST_P(SessionOperationsTest, RecordThatDoesNotExistIsNamed) {
    EXPECT_EQ(Thrown([&] { Core().GetEntity(Type("bug"), u"BUG00000009"); }),
              "There is no record of type \"bug\" with the identifier \"BUG00000009\".");
    EXPECT_EQ(Thrown([&] { Core().ImportEntity(Type("user"), nullptr, Text("17").Units()); }),
              "There is no record of type \"user\" with the identifier \"17\".");
    EXPECT_NE(Thrown([&] { Core().ImportEntity(Type("user"), nullptr, Text("").Units()); }), "");
}

TEST_P(SessionOperationsTest, NullRecordTypeIsABadValue) {
    EXPECT_NE(Thrown([&] { Core().ImportEntity(nullptr, nullptr, nullptr); }), "");
    EXPECT_NE(Thrown([&] { Core().BuildQueryDef(nullptr, 0); }), "");
}

TEST_P(SessionOperationsTest, WhatASessionHandsOutMayOutliveIt) {
    AdEntityPtr bug = New("bug");
    AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
    const AdResultSetPtr result = Core().BuildResultSet(query);
    OpenSession({});
    Set(bug, "title", "t");
    Save(bug);
    result->Prepare();
    result->Execute();
    EXPECT_EQ(result->GetRowCount(), 1);
}

TEST_P(SessionOperationsTest, StatisticsCountWhatWasDone) {
    Given("user", {{"login", "ann"}});
    const AdEntityPtr user = Open("user", "1");
    Set(user, "team", "red");
    Save(user);
    Save(Open("user", "1"));
    const Statistics expected = {.recordsCreated = 1, .recordsUpdated = 1, .commits = 3};
    EXPECT_EQ(Core().GetStatistics(), expected);
}

TEST_P(SessionOperationsTest, RefusedRecordsAreNotCounted) {
    EXPECT_NE(CommitFault(New("bug")), "");
    EXPECT_EQ(Core().GetStatistics(), Statistics());
}

TEST_P(SessionOperationsTest, FailureOfTheDatabaseIsRememberedAndThrown) {
    const AdEntityPtr user = New("user");
    Set(user, "login", "ann");
    Base().GetConnection().ExecuteScript(std::string("DROP TABLE \"user\"") +
                                         (IsFile() ? "" : " CASCADE"));
    const std::string text = Thrown([&] { CommitFault(user); });
    EXPECT_EQ(text.substr(0, 29), "The database failed (other): ");
    ASSERT_TRUE(Core().Failure().has_value());
    EXPECT_EQ(Core().Failure()->Kind(), sql::ErrorKind::Other);
}

TEST_P(SessionOperationsTest, DatabaseThatMayNotBeWrittenFails) {
    Reopen(Database::Mode::ReadOnly);
    const AdEntityPtr user = New("user");
    Set(user, "login", "ann");
    EXPECT_NE(Thrown([&] { CommitFault(user); }), "");
    ASSERT_TRUE(Core().Failure().has_value());
    EXPECT_EQ(Core().Failure()->Kind(), sql::ErrorKind::ReadOnly);
}

TEST_P(SessionOperationsTest, FailureOutsideATransactionLetsTheNextOperationTryAgain) {
    const AdEntityPtr user = New("user");
    Set(user, "login", "ann");
    Base().GetConnection().ExecuteScript("ALTER TABLE \"user\" RENAME TO hidden");
    EXPECT_NE(Thrown([&] { CommitFault(user); }), "");
    Base().GetConnection().ExecuteScript("ALTER TABLE hidden RENAME TO \"user\"");
    Save(user);
}

ON_EACH_LAYOUT(SessionOperationsTest);

}  // namespace

}  // namespace recorddb
