#include "session_fixture.h"

namespace recorddb {

namespace {

using testing::Test;
using Strings = std::vector<std::string>;

class ReferenceListsTest : public OnEachEngine<SessionTest> {
  protected:
    ReferenceListsTest() {
        for (const char* const login : {"ann", "bob", "cat", "dan"}) {
            Given("user", {{"login", login}});
        }
    }

    AdEntityPtr BugWatchedBy(const Strings& logins) {
        AdEntityPtr bug = New("bug");
        Set(bug, "title", "t");
        for (const std::string& login : logins) {
            EXPECT_EQ(Add(bug, "watchers", login), "");
        }
        Save(bug);
        return bug;
    }

    std::string Stored() {
        return Row("SELECT record, position, target FROM bug__watchers ORDER BY record, position");
    }
};

TEST_P(ReferenceListsTest, AreKeptInOrder) {
    BugWatchedBy({"cat", "ann"});
    EXPECT_EQ(Stored(), "1|0|3;1|1|1");
    EXPECT_EQ(Values(Open("bug", "1"), "watchers"), (Strings{"cat", "ann"}));
    EXPECT_EQ(Value(Open("bug", "1"), "watchers"), "cat\nann");
}

TEST_P(ReferenceListsTest, HoldEachRecordOnce) {
    BugWatchedBy({"ann", "bob", "ann"});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Add(bug, "watchers", "bob"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|0|1;1|1|2");
    EXPECT_EQ(Row("SELECT zt_version FROM bug"), "1");
}

TEST_P(ReferenceListsTest, GrowAtTheirEnd) {
    BugWatchedBy({"ann"});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Add(bug, "watchers", "dan"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|0|1;1|1|4");
    EXPECT_EQ(Row("SELECT zt_version FROM bug"), "2");
}

TEST_P(ReferenceListsTest, CloseTheGapOfWhatIsTakenOut) {
    BugWatchedBy({"ann", "bob", "cat"});
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Remove(bug, "watchers", "bob"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|0|1;1|1|3");
}

TEST_P(ReferenceListsTest, CanBeReplaced) {
    BugWatchedBy({"ann", "bob"});
    const AdEntityPtr bug = Open("bug", "1");
    for (const std::string& login : Values(bug, "watchers")) {
        EXPECT_EQ(Remove(bug, "watchers", login), "");
    }
    EXPECT_EQ(bug->GetFieldValue(Text("watchers"))->GetValueStatus(), 1);
    EXPECT_EQ(Add(bug, "watchers", "dan"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|0|4");
}

TEST_P(ReferenceListsTest, CanBeEmptied) {
    BugWatchedBy({"ann", "bob"});
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "watchers", "");
    Save(bug);
    EXPECT_EQ(Stored(), "");
}

TEST_P(ReferenceListsTest, CanBeChangedAgainAfterCommit) {
    const AdEntityPtr bug = BugWatchedBy({"ann"});
    EXPECT_EQ(Add(bug, "watchers", "bob"), "");
    Save(bug);
    EXPECT_EQ(Remove(bug, "watchers", "ann"), "");
    Save(bug);
    EXPECT_EQ(Stored(), "1|0|2");
}

TEST_P(ReferenceListsTest, RefuseWhatDoesNotExistOrIsNotInThem) {
    const AdEntityPtr bug = BugWatchedBy({"ann"});
    EXPECT_EQ(
        Add(bug, "watchers", "zoe"),
        "The field \"watchers\" of a record of type \"bug\" cannot refer to \"zoe\": there is "
        "no record of type \"user\" with this key.");
    EXPECT_NE(Add(bug, "watchers", ""), "");
    EXPECT_EQ(Remove(bug, "watchers", "bob"),
              "The field \"watchers\" of a record of type \"bug\" does not hold \"bob\", which was "
              "to be taken out.");
    EXPECT_EQ(Add(bug, "title", "ann"),
              "The field \"title\" of a record of type \"bug\" is not a reference list: \"ann\" "
              "can be neither added to it nor taken out.");
}

TEST_P(ReferenceListsTest, ChangedByTwoWritersAreNotMixed) {
    BugWatchedBy({"ann"});
    const AdEntityPtr mine = Open("bug", "1");
    EXPECT_EQ(Add(mine, "watchers", "bob"), "");
    const AdEntityPtr theirs = Open("bug", "1");
    EXPECT_EQ(Add(theirs, "watchers", "cat"), "");
    Save(theirs);
    EXPECT_NE(CommitFault(mine), "");
    EXPECT_EQ(Stored(), "1|0|1;1|1|3");
}

ON_EACH_LAYOUT(ReferenceListsTest);

}  // namespace

}  // namespace recorddb
