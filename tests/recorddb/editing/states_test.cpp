#include "session_fixture.h"

namespace recorddb {

namespace {

class StatesTest : public OnEachEngine<SessionTest> {};

TEST_P(StatesTest, NewRecordTakesTheStateItIsOpenedWith) {
    const AdEntityPtr bug = New("bug", "CLOSED");
    Set(bug, "title", "t");
    Save(bug);
    EXPECT_EQ(Row("SELECT state FROM bug"), "CLOSED");
}

TEST_P(StatesTest, ExistingRecordMovesOnlyToAGivenState) {
    Given("bug", {{"title", "t"}});
    Save(Open("bug", "1", "ASSIGNED"));
    EXPECT_EQ(Row("SELECT state, zt_version FROM bug"), "ASSIGNED|2");
    Save(Open("bug", "1"));
    EXPECT_EQ(Row("SELECT state, zt_version FROM bug"), "ASSIGNED|2");
}

TEST_P(StatesTest, UnknownStateIsRefusedWithTheStatesThereAre) {
    EXPECT_EQ(
        Thrown([&] { New("bug", "new"); }),
        "The record type \"bug\" has no state \"new\"; its states are: NEW, ASSIGNED, CLOSED.");
    EXPECT_EQ(
        Refusal(New("bug"), "state", "SOLVED"),
        "The record type \"bug\" has no state \"SOLVED\"; its states are: NEW, ASSIGNED, CLOSED.");
}

TEST_P(StatesTest, TypeWithoutStatesTakesNone) {
    EXPECT_EQ(Thrown([&] { New("user", "NEW"); }),
              "The record type \"user\" has no state \"NEW\"; its states are: none.");
}

TEST_P(StatesTest, StateCannotBeEmptied) {
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "t");
    Set(bug, "state", "");
    EXPECT_EQ(Fault(bug),
              "The field \"state\" of a record of type \"bug\" is empty, but needs a "
              "value.");
}

ON_EACH_LAYOUT(StatesTest);

}  // namespace

}  // namespace recorddb
