#include "recorddb/editing/record_checks.h"

#include "session_fixture.h"

namespace recorddb {

namespace {

class RecordChecksTest : public OnEachEngine<SessionTest> {
  protected:
    static constexpr const char* kEmptyTitle =
        "The field \"title\" of a record of type \"bug\" is empty, but needs a value.";
    static constexpr const char* kTakenSourceId =
        "The field \"source_id\" of a record of type \"bug\" cannot be \"7\": the record "
        "\"BUG00000001\" has this value already.";
};

TEST_P(RecordChecksTest, RequiredFieldNeedsAValueInANewRecord) {
    EXPECT_EQ(Fault(New("bug")), kEmptyTitle);
}

TEST_P(RecordChecksTest, RequiredFieldCannotBeEmptied) {
    Given("bug", {{"title", "t"}});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Fault(bug), "");
    Set(bug, "title", "");
    EXPECT_EQ(Fault(bug), kEmptyTitle);
    EXPECT_EQ(CommitFault(bug), kEmptyTitle);
}

TEST_P(RecordChecksTest, PartsOfAKeyAreRequired) {
    const AdEntityPtr place = New("place");
    Set(place, "town", "Bree");
    EXPECT_EQ(Fault(place),
              "The field \"street\" of a record of type \"place\" is empty, but needs a value.");
}

TEST_P(RecordChecksTest, UniqueValueNamesTheRecordThatHasIt) {
    Given("bug", {{"title", "t"}, {"source_id", "7"}});
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "u");
    Set(bug, "source_id", "7");
    EXPECT_EQ(Fault(bug), kTakenSourceId);
}

TEST_P(RecordChecksTest, RecordsWithoutAUniqueValueAreAllowed) {
    Given("bug", {{"title", "t"}});
    Given("bug", {{"title", "t"}});
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "2");
}

TEST_P(RecordChecksTest, RecordIsNotItsOwnTwin) {
    const AdEntityPtr bug = Given("bug", {{"title", "t"}, {"source_id", "7"}});
    Set(bug, "source_id", "8");
    Set(bug, "source_id", "7");
    Save(bug);
    const AdEntityPtr again = Open("bug", "1");
    Set(again, "source_id", "7");
    Save(again);
}

TEST_P(RecordChecksTest, KeyNamesTheRecordThatHasIt) {
    Given("place", {{"town", "Bree"}, {"street", "East Road"}});
    const AdEntityPtr place = New("place");
    Set(place, "town", "Bree");
    Set(place, "street", "East Road");
    EXPECT_EQ(Fault(place),
              "There is a record of type \"place\" with the key \"Bree East Road\" "
              "already (dbid 1).");
    Set(place, "street", "West Road");
    EXPECT_EQ(Fault(place), "");
}

TEST_P(RecordChecksTest, CommitChecksWhatWasNotValidated) {
    EXPECT_EQ(CommitFault(New("bug")), kEmptyTitle);
}

TEST_P(RecordChecksTest, ValueTakenAfterValidateIsReportedByCommit) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "late");
    Set(bug, "source_id", "7");
    EXPECT_EQ(Fault(bug), "");
    Given("bug", {{"title", "t"}, {"source_id", "7"}});
    EXPECT_EQ(CommitFault(bug), kTakenSourceId);
}

TEST_P(RecordChecksTest, ReferencedRecordThatIsGoneIsReportedByCommit) {
    Given("user", {{"login", "ann"}});
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "t");
    EXPECT_EQ(Add(bug, "watchers", "ann"), "");
    EXPECT_EQ(Fault(bug), "");
    Base().GetConnection().ExecuteScript("DELETE FROM \"user\"");
    EXPECT_EQ(CommitFault(bug),
              "The field \"watchers\" of a record of type \"bug\" refers to the record of type "
              "\"user\" with the dbid 1, which is gone.");
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
}

TEST_P(RecordChecksTest, RuleOfTheTablesAloneIsReportedByCommit) {
    Base().GetConnection().ExecuteScript("CREATE UNIQUE INDEX own ON bug (title, votes)");
    Given("bug", {{"title", "t"}, {"votes", "1"}});
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "t");
    Set(bug, "votes", "1");
    // The rule in the engine's own words.
    EXPECT_EQ(CommitFault(bug),
              std::string("The database refused a record of type \"bug\": ") +
                  (IsFile() ? "UNIQUE constraint failed: bug.title, bug.votes"
                            : "duplicate key value violates unique constraint \"own\" (Key "
                              "(title, votes)=(t, 1) already exists.)"));
    EXPECT_FALSE(Core().Failure().has_value());
}

ON_EACH_LAYOUT(RecordChecksTest);

}  // namespace

}  // namespace recorddb
