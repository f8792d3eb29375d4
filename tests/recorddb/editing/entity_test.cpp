#include "recorddb/editing/entity.h"

#include "recorddb/store/batch/database_batch.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

class EntityTest : public OnEachEngine<SessionTest> {};

TEST_P(EntityTest, NewRecordIsWrittenAtCommit) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "It rains");
    Set(bug, "votes", " 12 ");
    Set(bug, "opened", "2024-02-29T10:00:00+02:00");
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
    Save(bug);
    EXPECT_EQ(Row("SELECT dbid, zt_version, id, state, title, votes, opened, severity FROM bug"),
              "1|1|BUG00000001|NEW|It rains|12|2024-02-29 08:00:00|NULL");
}

TEST_P(EntityTest, DroppedHandleDropsItsChanges) {
    { Set(New("bug"), "title", "gone"); }
    EXPECT_EQ(Row("SELECT count(*) FROM bug"), "0");
}

TEST_P(EntityTest, DbidOfNewRecordIsTheOneItIsWrittenWith) {
    const AdEntityPtr first = New("bug");
    const AdEntityPtr second = New("bug");
    Set(first, "title", "first");
    Set(second, "title", "second");
    EXPECT_EQ(Value(first, "dbid"), "1");
    EXPECT_EQ(Value(second, "dbid"), "2");
    EXPECT_EQ(Value(second, "id"), "BUG00000002");
    Save(second);
    Save(first);
    EXPECT_EQ(Row("SELECT dbid, title FROM bug ORDER BY dbid"), "1|first;2|second");
}

TEST_P(EntityTest, HandlesThatAreDroppedLeaveNoGapsInDisplayIds) {
    for (int i = 0; i < 3; ++i) {
        New("bug");
    }
    EXPECT_EQ(Value(Given("bug", {{"title", "next"}}), "id"), "BUG00000001");
}

TEST_P(EntityTest, DbidTakenByAnotherWriterIsReported) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "mine");
    EXPECT_EQ(Value(bug, "dbid"), "1");
    const auto other = Database::Open(Location(), Database::Mode::ReadWrite);
    other->GetConnection().ExecuteScript(
        "INSERT INTO bug (dbid, id, state, title) VALUES (1, 'BUG00000001', 'NEW', 'theirs')");
    EXPECT_EQ(CommitFault(bug),
              "The dbid 1, under which a new record of type \"bug\" was to be written, was given "
              "to another record meanwhile.");
    EXPECT_EQ(Row("SELECT title FROM bug"), "theirs");
}

TEST_P(EntityTest, DbidThatNobodyReadIsChosenAtCommit) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "mine");
    const auto other = Database::Open(Location(), Database::Mode::ReadWrite);
    other->GetConnection().ExecuteScript(
        "INSERT INTO bug (dbid, id, state, title) VALUES (1, 'BUG00000001', 'NEW', 'theirs')");
    DatabaseBatch::Of(*other).Numbers().Note(*other->GetSchema().FindType("bug"), 1);
    Save(bug);
    EXPECT_EQ(Value(bug, "id"), "BUG00000002");
}

TEST_P(EntityTest, FieldNamesAreMatchedWithoutRegardToCase) {
    const AdEntityPtr bug = New("BUG");
    Set(bug, "TITLE", "loud");
    EXPECT_EQ(Value(bug, "Title"), "loud");
    EXPECT_EQ(bug->GetFieldType(Text("Source_ID")), 1);
}

TEST_P(EntityTest, FieldTypesHaveTheirCodes) {
    const AdEntityPtr bug = New("bug");
    const std::vector<std::pair<const char*, int>> codes = {
        {"title", 1}, {"description", 2}, {"votes", 3}, {"opened", 4},
        {"owner", 5}, {"watchers", 6},    {"files", 7}, {"id", 8},
        {"state", 9}, {"log", 10},        {"dbid", 11}, {"severity", 12}};
    for (const auto& [field, code] : codes) {
        EXPECT_EQ(bug->GetFieldType(Text(field)), code) << field;
    }
}

TEST_P(EntityTest, UnknownFieldIsNamed) {
    const AdEntityPtr bug = New("bug");
    const std::string text = "The record type \"bug\" has no field \"colour\".";
    EXPECT_EQ(Refusal(bug, "colour", "red"), text);
    EXPECT_EQ(Add(bug, "colour", "red"), text);
    EXPECT_EQ(Remove(bug, "colour", "red"), text);
    EXPECT_EQ(Thrown([&] { bug->GetFieldType(Text("colour")); }), text);
    EXPECT_EQ(Thrown([&] { bug->GetFieldValue(Text("colour")); }), text);
}

TEST_P(EntityTest, ReferencedTypeIsNamed) {
    const AdEntityPtr bug = New("bug");
    EXPECT_EQ(bug->GetFieldReferencedEntityDefName(Text("owner")), u"user");
    EXPECT_EQ(bug->GetFieldReferencedEntityDefName(Text("watchers")), u"user");
    EXPECT_EQ(bug->GetFieldReferencedEntityDefName(Text("title")), u"");
}

TEST_P(EntityTest, EmptyTextClearsAField) {
    Given("bug", {{"title", "t"}, {"description", "long"}});
    const AdEntityPtr bug = Open("bug", "BUG00000001");
    Set(bug, "description", "");
    EXPECT_EQ(bug->GetFieldValue(Text("description"))->GetValueStatus(), 1);
    Save(bug);
    EXPECT_EQ(Row("SELECT description FROM bug"), "NULL");
}

TEST_P(EntityTest, ValueStatusTellsWhetherThereIsAValue) {
    const AdEntityPtr bug = New("bug");
    EXPECT_EQ(bug->GetFieldValue(Text("title"))->GetValueStatus(), 1);
    EXPECT_EQ(bug->GetFieldValue(Text("watchers"))->GetValueStatus(), 1);
    Set(bug, "title", "t");
    EXPECT_EQ(bug->GetFieldValue(Text("title"))->GetValueStatus(), 2);
}

TEST_P(EntityTest, UpdateWritesWhatChangedAndCountsTheVersion) {
    Given("bug", {{"title", "t"}, {"votes", "1"}});
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "votes", "2");
    // A column that the update does not write keeps what somebody puts there meanwhile.
    Base().GetConnection().ExecuteScript("UPDATE bug SET description = 'by hand'");
    Save(bug);
    EXPECT_EQ(Row("SELECT zt_version, title, votes, description FROM bug"), "2|t|2|by hand");
}

TEST_P(EntityTest, UpdateThatChangesNothingWritesNothing) {
    Given("bug", {{"title", "t"}});
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "title", "other");
    Set(bug, "title", "t");
    Save(bug);
    EXPECT_EQ(Row("SELECT zt_version FROM bug"), "1");
    EXPECT_EQ(Core().GetStatistics().recordsUpdated, 1);
}

TEST_P(EntityTest, RecordCanBeChangedAndCommittedAgain) {
    const AdEntityPtr bug = Given("bug", {{"title", "first"}});
    Set(bug, "title", "second");
    Save(bug);
    EXPECT_EQ(Row("SELECT zt_version, title FROM bug"), "2|second");
}

TEST_P(EntityTest, ManyDifferentSetsOfChangedColumnsAreWritten) {
    const char* const fields[] = {"title",    "description", "votes", "source_id",
                                  "severity", "opened",      "owner"};
    const char* const values[] = {"x", "y", "3", "s", "major", "2020-01-01", "ann"};
    Given("user", {{"login", "ann"}});
    for (unsigned set = 1; set < 128; ++set) {
        const AdEntityPtr created = Given("bug", {{"title", "t"}});
        const AdEntityPtr bug = Open("bug", Value(created, "dbid"));
        for (unsigned field = 0; field < 7; ++field) {
            if ((set >> field & 1U) != 0) {
                Set(bug, fields[field], field == 3 ? std::to_string(set) : values[field]);
            }
        }
        Save(bug);
        EXPECT_EQ(Value(Open("bug", Value(created, "dbid")), "title"), (set & 1U) != 0 ? "x" : "t");
        EXPECT_EQ(Value(Open("bug", Value(created, "dbid")), "votes"), (set & 4U) != 0 ? "3" : "");
    }
    EXPECT_EQ(Row("SELECT count(*), sum(votes), count(owner) FROM bug"), "127|192|64");
}

TEST_P(EntityTest, HighestVersionThatThereIsEndsTheCount) {
    Given("bug", {{"title", "t"}});
    Base().GetConnection().ExecuteScript("UPDATE bug SET zt_version = 9223372036854775807");
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "title", "other");
    const std::string text = Thrown([&] { CommitFault(bug); });
    EXPECT_NE(text.find("zt_version holds the number 9223372036854775807"), std::string::npos)
        << text;
    EXPECT_EQ(Row("SELECT zt_version, title FROM bug"), "9223372036854775807|t");
}

TEST_P(EntityTest, TwoWritersNeverOverwriteEachOther) {
    Given("bug", {{"title", "t"}});
    const AdEntityPtr mine = Open("bug", "1");
    Set(mine, "title", "mine");
    const AdEntityPtr theirs = Open("bug", "1");
    Set(theirs, "title", "theirs");
    Save(theirs);
    EXPECT_EQ(CommitFault(mine),
              "The record \"BUG00000001\" of type \"bug\" was changed by somebody else: it has "
              "version 2, and this change was made to version 1.");
    EXPECT_EQ(Row("SELECT title FROM bug"), "theirs");
}

TEST_P(EntityTest, RecordThatIsGoneIsReported) {
    Given("bug", {{"title", "t"}});
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "title", "mine");
    Base().GetConnection().ExecuteScript("DELETE FROM bug");
    EXPECT_EQ(CommitFault(bug), "The record of type \"bug\" with the dbid 1 is gone.");
}

TEST_P(EntityTest, RevertDropsAllChanges) {
    Given("bug", {{"title", "t"}});
    const AdEntityPtr bug = Open("bug", "1", "CLOSED");
    Set(bug, "title", "other");
    bug->Revert();
    EXPECT_EQ(Value(bug, "title"), "t");
    Save(bug);
    EXPECT_EQ(Row("SELECT title, state, zt_version FROM bug"), "t|NEW|1");
}

TEST_P(EntityTest, RevertedNewRecordKeepsTheStateItWasOpenedFor) {
    const AdEntityPtr bug = New("bug", "ASSIGNED");
    Set(bug, "state", "CLOSED");
    bug->Revert();
    Set(bug, "title", "t");
    Save(bug);
    EXPECT_EQ(Row("SELECT state FROM bug"), "ASSIGNED");
}

TEST_P(EntityTest, FailedCommitKeepsTheChangesForAnotherTry) {
    Given("bug", {{"title", "t"}, {"source_id", "1"}});
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "second");
    Set(bug, "source_id", "1");
    EXPECT_NE(CommitFault(bug), "");
    Set(bug, "source_id", "2");
    Save(bug);
    EXPECT_EQ(Row("SELECT dbid, title, source_id FROM bug WHERE dbid = 2"), "2|second|2");
}

TEST_P(EntityTest, TextOutsideTheBasicPlaneIsKept) {
    Given("bug", {{"title", "Grüße 🎈 日本"}});
    EXPECT_EQ(Row("SELECT title FROM bug"), "Grüße 🎈 日本");
    EXPECT_EQ(Value(Open("bug", "1"), "title"), "Grüße 🎈 日本");
}

ON_EACH_LAYOUT(EntityTest);

}  // namespace

}  // namespace recorddb
