// What is asked ahead is not asked again. The tests change the database unseen by the session,
// which then still goes by what it was told ahead.
#include "recorddb/store/batch/look_ahead.h"

#include <gtest/gtest.h>

#include "session_fixture.h"

namespace recorddb {

namespace {

class LookAheadTest : public OnEachEngine<SessionTest> {
  protected:
    LookAheadTest() {
        Given("user", {{"login", "ann"}});
        const AdEntityPtr bug = Given("bug", {{"title", "a"}, {"source_id", "x"}});
        Add(bug, "watchers", "ann");
        Save(bug);
        Given("bug", {{"title", "b"}, {"source_id", "y"}});
        m_transaction = Core().BeginTransaction(Writing::Gathered);
    }

    ExpectedSearch Search(std::string_view type, std::string_view field, std::string value) {
        ExpectedSearch search;
        search.type = Base().GetSchema().FindType(type);
        search.values.emplace_back(search.type->FindField(field), std::move(value));
        return search;
    }

    void LookAhead(const ExpectedSearch& search) {
        m_transaction->LookAhead(std::vector<ExpectedSearch>{search});
    }

    void ChangeUnseen(const char* sql) { Base().GetConnection().ExecuteScript(sql); }

    // The dbids of the bugs with that source id, or that value of another field.
    std::string Found(std::string_view value, std::string_view field = "source_id") {
        AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
        query->SelectDbId(1);
        query->BuildFilter(nullptr, Text(field), AdCompOp_t::kEqual, Text(value), 1);
        const AdResultSetPtr result = Core().BuildResultSet(query);
        result->Prepare();
        result->Execute();
        std::string found;
        int status = 1;
        for (result->FetchNext(status); status == 1; result->FetchNext(status)) {
            Obx_String text;
            result->GetColumn(1, text, 0);
            found += text.ToUtf8() + " ";
        }
        return found;
    }

    std::unique_ptr<SessionTransaction> m_transaction;
};

TEST_P(LookAheadTest, RecordsThatWereForetoldAreFound) {
    LookAhead(Search("bug", "source_id", "x"));
    ChangeUnseen("UPDATE bug SET source_id = 'z' WHERE dbid = 1");
    EXPECT_EQ(Found("x"), "1 ");
}

TEST_P(LookAheadTest, AbsentRecordsAreForetoldToo) {
    LookAhead(Search("bug", "source_id", "new"));
    ChangeUnseen("UPDATE bug SET source_id = 'new' WHERE dbid = 1");
    EXPECT_EQ(Found("new"), "");
}

TEST_P(LookAheadTest, SeveralRecordsAreLeftToTheDatabase) {
    ChangeUnseen("UPDATE bug SET votes = 3");
    LookAhead(Search("bug", "votes", "3"));
    ChangeUnseen("UPDATE bug SET votes = 4 WHERE dbid = 1");
    EXPECT_EQ(Found("3", "votes"), "2 ");
}

TEST_P(LookAheadTest, FieldsAndListsAreForetoldOnDemand) {
    ExpectedSearch search = Search("bug", "source_id", "x");
    search.fields = true;
    LookAhead(search);
    ChangeUnseen("UPDATE bug SET title = 'other'; DELETE FROM bug__watchers");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Value(bug, "title"), "a");
    EXPECT_EQ(Values(bug, "watchers"), std::vector<std::string>{"ann"});
    EXPECT_EQ(Value(Open("bug", "2"), "title"), "other");
}

TEST_P(LookAheadTest, KeysOfTheRecordsInListsAreForetoldOnDemand) {
    ExpectedSearch search = Search("bug", "source_id", "x");
    search.fields = true;
    search.listKeys = true;
    LookAhead(search);
    ChangeUnseen("UPDATE \"user\" SET login = 'eve'");
    const AdEntityPtr bug = Open("bug", "1");
    EXPECT_EQ(Values(bug, "watchers"), std::vector<std::string>{"ann"});
    EXPECT_EQ(Remove(bug, "watchers", "ann"), "");
}

TEST_P(LookAheadTest, ReferenceIsFoundByItsKey) {
    LookAhead(Search("user", "login", "ann"));
    ChangeUnseen("UPDATE \"user\" SET login = 'eve'");
    EXPECT_EQ(Refusal(New("bug"), "owner", "ann"), "");
}

TEST_P(LookAheadTest, ValueThatMustBeUniqueIsComparedWithWhatWasForetold) {
    LookAhead(Search("bug", "source_id", "new"));
    ChangeUnseen("UPDATE bug SET source_id = 'new' WHERE dbid = 1");
    const AdEntityPtr bug = New("bug");
    Set(bug, "title", "c");
    Set(bug, "source_id", "new");
    EXPECT_EQ(Fault(bug), "");
}

TEST_P(LookAheadTest, OriginalsOfDuplicatesAreForetoldToTheEndOfTheChain) {
    ChangeUnseen(
        "INSERT INTO zt_duplicate VALUES (5, 1, 2, '2020-01-01 00:00:00'), "
        "(5, 2, 3, '2020-01-01 00:00:00')");
    ExpectedSearch search = Search("bug", "source_id", "x");
    search.original = true;
    LookAhead(search);
    ChangeUnseen("DELETE FROM zt_duplicate");
    AdActionDef* const action = Type("bug")->LookupActionDef(AdActionType_t::kDuplicate);
    EXPECT_NE(Thrown([&] {
                  Core().MarkEntityAsDuplicate(Open("bug", "2"), Open("bug", "1"), action, 1);
              }),
              "");
}

TEST_P(LookAheadTest, WhatIsWrittenIsAskedAnew) {
    ExpectedSearch search = Search("bug", "source_id", "x");
    search.fields = true;
    LookAhead(search);
    const AdEntityPtr bug = Open("bug", "1");
    Set(bug, "source_id", "z");
    Save(bug);
    EXPECT_EQ(Found("x"), "");
    EXPECT_EQ(Value(Open("bug", "1"), "source_id"), "z");
}

TEST_P(LookAheadTest, NothingIsKnownAfterTheTransaction) {
    LookAhead(Search("bug", "source_id", "x"));
    m_transaction->Commit();
    m_transaction = Core().BeginTransaction(Writing::Gathered);
    ChangeUnseen("UPDATE bug SET source_id = 'z' WHERE dbid = 1");
    EXPECT_EQ(Found("x"), "");
}

TEST_P(LookAheadTest, NothingIsAskedAheadWhereNothingIsGathered) {
    m_transaction.reset();
    m_transaction = Core().BeginTransaction(Writing::AtOnce);
    LookAhead(Search("bug", "source_id", "x"));
    ChangeUnseen("UPDATE bug SET source_id = 'z' WHERE dbid = 1");
    EXPECT_EQ(Found("x"), "");
}

ON_EACH_LAYOUT(LookAheadTest);

}  // namespace

}  // namespace recorddb
