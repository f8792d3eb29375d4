#include "recorddb/store/batch/database_batch.h"
#include "recorddb/store/duplicate_table.h"
#include "session_fixture.h"

namespace recorddb {

namespace {

class DuplicatesTest : public OnEachEngine<SessionTest> {
  protected:
    DuplicatesTest() {
        for (const char* const title : {"a", "b", "c"}) {
            Given("bug", {{"title", title}});
        }
    }

    std::string MarkFault(const AdEntityPtr& duplicate, const AdEntityPtr& original) {
        AdActionDef* const action = Type("bug")->LookupActionDef(AdActionType_t::kDuplicate);
        return Thrown([&] { Core().MarkEntityAsDuplicate(duplicate, original, action, 1); });
    }

    void Mark(const AdEntityPtr& duplicate, const char* original) {
        EXPECT_EQ(MarkFault(duplicate, Core().GetEntity(Type("bug"), Text(original))), "");
        Save(duplicate);
    }

    std::string Links() {
        return Row("SELECT record_type, duplicate, original FROM zt_duplicate ORDER BY duplicate");
    }
};

TEST_P(DuplicatesTest, LinkIsWrittenAtCommit) {
    const AdEntityPtr bug = Open("bug", "2");
    EXPECT_EQ(MarkFault(bug, Open("bug", "1")), "");
    EXPECT_EQ(Links(), "");
    Save(bug);
    EXPECT_EQ(Links(), "5|2|1");
    EXPECT_EQ(Row("SELECT length(action_time), CASE WHEN action_time > '2020' THEN 1 END FROM "
                  "zt_duplicate"),
              "19|1");
    EXPECT_EQ(Core().GetStatistics().duplicateLinks, 1);
    EXPECT_EQ(Core().GetStatistics().recordsUpdated, 0);
}

TEST_P(DuplicatesTest, DuplicateMovesToTheStateForDuplicates) {
    Mark(Open("bug", "2"), "1");
    EXPECT_EQ(Row("SELECT state FROM bug ORDER BY dbid"), "NEW;CLOSED;NEW");
}

TEST_P(DuplicatesTest, WithoutSuchAStateTheDuplicateStays) {
    Given("task", {{"title", "a"}});
    const AdEntityPtr task = Given("task", {{"title", "b"}});
    Core().MarkEntityAsDuplicate(task, Open("task", "1"),
                                 Type("task")->LookupActionDef(AdActionType_t::kDuplicate), 1);
    Save(task);
    EXPECT_EQ(Links(), "6|2|1");
    EXPECT_EQ(Row("SELECT state FROM task WHERE dbid = 2"), "OPEN");
}

TEST_P(DuplicatesTest, RecordJustCreatedCanBeMarked) {
    const AdEntityPtr bug = Given("bug", {{"title", "new"}});
    Mark(bug, "1");
    EXPECT_EQ(Row("SELECT state, zt_version FROM bug WHERE dbid = 4"), "CLOSED|2");
}

TEST_P(DuplicatesTest, NewRecordCanBeMarkedBeforeItIsWritten) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "new");
    Mark(bug, "1");
    EXPECT_EQ(Links(), "5|4|1");
}

TEST_P(DuplicatesTest, SameMarkAgainDoesNotDouble) {
    Mark(Open("bug", "2"), "1");
    Mark(Open("bug", "2"), "1");
    EXPECT_EQ(Links(), "5|2|1");
    EXPECT_EQ(Row("SELECT zt_version FROM bug WHERE dbid = 2"), "2");
}

TEST_P(DuplicatesTest, NewMarkTakesThePlaceOfTheFormer) {
    Mark(Open("bug", "2"), "1");
    Mark(Open("bug", "2"), "3");
    EXPECT_EQ(Links(), "5|2|3");
    EXPECT_EQ(Row("SELECT zt_version FROM bug WHERE dbid = 2"), "3");
}

TEST_P(DuplicatesTest, RecordIsNoDuplicateOfItself) {
    EXPECT_EQ(MarkFault(Open("bug", "2"), Open("bug", "2")),
              "The record \"BUG00000002\" of type \"bug\" cannot be marked as a duplicate of "
              "itself.");
}

TEST_P(DuplicatesTest, CirclesAreRefused) {
    Mark(Open("bug", "2"), "1");
    Mark(Open("bug", "3"), "2");
    EXPECT_EQ(MarkFault(Open("bug", "1"), Open("bug", "3")),
              "The record \"BUG00000001\" of type \"bug\" cannot be marked as a duplicate of "
              "\"BUG00000003\", which is a duplicate of it in turn.");
    EXPECT_EQ(Links(), "5|2|1;5|3|2");
}

TEST_P(DuplicatesTest, CircleMadeByHandDoesNotHangTheSearch) {
    Base().GetConnection().ExecuteScript(
        "INSERT INTO zt_duplicate VALUES (5, 1, 2, ''), "
        "(5, 2, 1, '')");
    EXPECT_FALSE(DuplicateTable(DatabaseBatch::Of(Base())).LeadsTo(5, 1, 3));
}

TEST_P(DuplicatesTest, RecordsOfDifferentTypesAreRefused) {
    Given("task", {{"title", "a"}});
    EXPECT_EQ(MarkFault(Open("bug", "1"), Open("task", "1")),
              "The record \"BUG00000001\" of type \"bug\" cannot be marked as a duplicate of a "
              "record of type \"task\".");
}

TEST_P(DuplicatesTest, TypeWithoutStatesHasNoDuplicates) {
    Given("user", {{"login", "ann"}});
    EXPECT_EQ(MarkFault(Open("user", "1"), Open("user", "1")),
              "The record type \"user\" has no action of the kind 4.");
}

TEST_P(DuplicatesTest, OriginalMustBeWritten) {
    EXPECT_EQ(MarkFault(Open("bug", "1"), New("bug")),
              "A record of type \"bug\" cannot be marked as a duplicate of one that has not been "
              "written.");
}

TEST_P(DuplicatesTest, NullRecordsAndOtherActionsAreBadValues) {
    EXPECT_NE(MarkFault(nullptr, Open("bug", "1")), "");
    EXPECT_NE(MarkFault(Open("bug", "1"), nullptr), "");
    AdActionDef* const modify = Type("bug")->LookupActionDef(AdActionType_t::kModify);
    EXPECT_NE(Thrown([&] {
                  Core().MarkEntityAsDuplicate(Open("bug", "2"), Open("bug", "1"), modify, 1);
              }),
              "");
    EXPECT_NE(Thrown([&] {
                  Core().MarkEntityAsDuplicate(Open("bug", "2"), Open("bug", "1"), nullptr, 1);
              }),
              "");
}

TEST_P(DuplicatesTest, RevertDropsTheMark) {
    const AdEntityPtr bug = Open("bug", "2");
    EXPECT_EQ(MarkFault(bug, Open("bug", "1")), "");
    bug->Revert();
    Save(bug);
    EXPECT_EQ(Links(), "");
    EXPECT_EQ(Row("SELECT state FROM bug WHERE dbid = 2"), "NEW");
}

TEST_P(DuplicatesTest, BothEndsOfALinkAreFound) {
    Mark(Open("bug", "3"), "1");
    Mark(Open("bug", "2"), "1");
    DuplicateTable table(DatabaseBatch::Of(Base()));
    EXPECT_EQ(table.OriginalOf(5, 2), 1);
    EXPECT_EQ(table.OriginalOf(5, 1), std::nullopt);
    EXPECT_EQ(table.DuplicatesOf(5, 1), (std::vector<std::int64_t>{2, 3}));
}

ON_EACH_LAYOUT(DuplicatesTest);

}  // namespace

}  // namespace recorddb
