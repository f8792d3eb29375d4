#include "recorddb/editing/result_set.h"

#include "session_fixture.h"

namespace recorddb {

namespace {

using Strings = std::vector<std::string>;

class ResultSetTest : public OnEachEngine<SessionTest> {
  protected:
    ResultSetTest() {
        Given("user", {{"login", "ann"}, {"team", "red"}});
        Given("user", {{"login", "bob"}, {"team", "red"}});
        Given("user", {{"login", "cat"}});
        Given("bug", {{"title", "a"}, {"owner", "ann"}, {"votes", "3"}, {"opened", "2020-01-02"}});
        Given("bug", {{"title", "b"}, {"owner", "bob"}, {"votes", "3"}, {"severity", "minor"}});
    }

    bool TeamIsSearchedByAnIndex() {
        return IsFile() ? Row("EXPLAIN QUERY PLAN SELECT dbid FROM user WHERE team = 'x'")
                                  .find("INDEX") != std::string::npos
                        : Row("SELECT count(*) FROM pg_index JOIN pg_attribute ON attrelid = "
                              "indrelid AND attnum = indkey[0] WHERE indrelid = "
                              "'\"user\"'::regclass AND attname = 'team'") == "1";
    }

    using Conditions = std::vector<std::pair<std::string_view, std::string_view>>;

    AdResultSetPtr Run(std::string_view type, std::string_view column, const Conditions& conditions,
                       long limit = 0) {
        AdQueryDefPtr query = Core().BuildQueryDef(Type(type), 0);
        query->SelectField(1, Type(type)->GetFieldPath(Text(column), 0));
        for (const auto& [field, value] : conditions) {
            query->BuildFilter(nullptr, Text(field), AdCompOp_t::kEqual, Text(value), 1);
        }
        AdResultSetPtr result = Core().BuildResultSet(query);
        Core().UnbuildQueryDef(query);
        EXPECT_FALSE(query);
        if (limit > 0) {
            result->SetRowLimit(limit);
        }
        result->Prepare();
        result->Execute();
        return result;
    }

    Strings Find(std::string_view type, std::string_view column, const Conditions& conditions,
                 long limit = 0) {
        AdResultSetPtr result = Run(type, column, conditions, limit);
        Strings found;
        int status = 1;
        for (result->FetchNext(status); status == 1; result->FetchNext(status)) {
            Obx_String value;
            result->GetColumn(1, value, 0);
            found.push_back(value.ToUtf8());
        }
        EXPECT_EQ(result->GetRowCount(), static_cast<long>(found.size()));
        Core().UnbuildResultSet(result);
        return found;
    }
};

TEST_P(ResultSetTest, FindsRecordsByTheValueOfAField) {
    EXPECT_EQ(Find("user", "login", {{"team", "red"}}), (Strings{"ann", "bob"}));
    EXPECT_EQ(Find("user", "dbid", {{"LOGIN", "bob"}}), (Strings{"2"}));
    EXPECT_EQ(Find("user", "login", {{"team", "RED"}}), Strings{});
}

TEST_P(ResultSetTest, FindsByEveryKindOfPlainField) {
    EXPECT_EQ(Find("bug", "id", {{"dbid", "2"}}), (Strings{"BUG00000002"}));
    EXPECT_EQ(Find("bug", "dbid", {{"id", "BUG00000002"}}), (Strings{"2"}));
    EXPECT_EQ(Find("bug", "title", {{"state", "NEW"}}), (Strings{"a", "b"}));
    EXPECT_EQ(Find("bug", "title", {{"votes", " 3"}}), (Strings{"a", "b"}));
    EXPECT_EQ(Find("bug", "title", {{"severity", "minor"}}), (Strings{"b"}));
    EXPECT_EQ(Find("bug", "title", {{"opened", "2020-01-02T01:00:00+01:00"}}), (Strings{"a"}));
}

TEST_P(ResultSetTest, FindsReferencesByKeyAndDeliversThemByKey) {
    EXPECT_EQ(Find("bug", "owner", {{"owner", "bob"}}), (Strings{"bob"}));
    EXPECT_EQ(Find("bug", "owner", {{"owner", "zoe"}}), Strings{});
}

TEST_P(ResultSetTest, AllConditionsMustHold) {
    EXPECT_EQ(Find("bug", "title", {{"votes", "3"}, {"owner", "ann"}}), (Strings{"a"}));
    EXPECT_EQ(Find("bug", "title", {{"votes", "4"}, {"owner", "ann"}}), Strings{});
}

TEST_P(ResultSetTest, WithoutConditionsDeliversAll) {
    EXPECT_EQ(Find("user", "login", {}), (Strings{"ann", "bob", "cat"}));
}

TEST_P(ResultSetTest, EmptyValueFindsRecordsWithoutOne) {
    EXPECT_EQ(Find("user", "login", {{"team", ""}}), (Strings{"cat"}));
}

TEST_P(ResultSetTest, ValueThatAColumnCannotHoldFindsNothing) {
    EXPECT_EQ(Find("bug", "title", {{"votes", "many"}}), Strings{});
    EXPECT_EQ(Find("bug", "title", {{"opened", "soon"}}), Strings{});
    EXPECT_EQ(Find("bug", "title", {{"dbid", "BUG00000001"}}), Strings{});
}

TEST_P(ResultSetTest, RowLimitEndsTheCount) {
    EXPECT_EQ(Find("user", "login", {{"team", "red"}}, 1), (Strings{"ann"}));
    EXPECT_EQ(Find("user", "login", {{"team", "red"}}, 100), (Strings{"ann", "bob"}));
}

TEST_P(ResultSetTest, SelectsTheDbId) {
    AdQueryDefPtr query = Core().BuildQueryDef(Type("user"), 0);
    query->SelectField(2, Text("login"));
    query->SelectDbId(1);
    query->BuildFilter(nullptr, Text("login"), AdCompOp_t::kEqual, Text("cat"), 1);
    const AdResultSetPtr result = Core().BuildResultSet(query);
    result->Prepare();
    result->Execute();
    int status = 0;
    result->FetchNext(status);
    Obx_String dbid;
    Obx_String login;
    result->GetColumn(1, dbid, 0);
    result->GetColumn(2, login, 0);
    EXPECT_EQ(dbid, u"3");
    EXPECT_EQ(login, u"cat");
}

TEST_P(ResultSetTest, RowsAreThoseOfTheMomentOfExecute) {
    const AdResultSetPtr result = Run("user", "login", {{"team", "red"}});
    Given("user", {{"login", "eve"}, {"team", "red"}});
    EXPECT_EQ(result->GetRowCount(), 2);
    // Two result sets of the same shape do not disturb each other.
    const AdResultSetPtr other = Run("user", "login", {{"team", "blue"}});
    int status = 0;
    result->FetchNext(status);
    EXPECT_EQ(status, 1);
    other->FetchNext(status);
    EXPECT_EQ(status, 0);
}

TEST_P(ResultSetTest, SearchedFieldGetsAnIndex) {
    Find("user", "login", {{"team", "red"}});
    EXPECT_TRUE(TeamIsSearchedByAnIndex());
}

TEST_P(ResultSetTest, IndexMadeInASavepointThatIsUndoneIsMadeAgain) {
    const auto transaction = Core().BeginTransaction();
    {
        const auto savepoint = transaction->Savepoint();
        EXPECT_EQ(Find("user", "login", {{"team", "red"}}).size(), 2U);
    }
    EXPECT_EQ(Find("user", "login", {{"team", "red"}}).size(), 2U);
    EXPECT_TRUE(TeamIsSearchedByAnIndex());
}

TEST_P(ResultSetTest, ReadOnlyDatabaseIsSearchedWithoutAnIndex) {
    Reopen(Database::Mode::ReadOnly);
    EXPECT_EQ(Find("user", "login", {{"team", "red"}}).size(), 2U);
    EXPECT_FALSE(Core().Failure().has_value());
}

TEST_P(ResultSetTest, FieldsThatCannotBeSearchedAreNamed) {
    const AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
    EXPECT_EQ(Thrown([&] { query->SelectField(1, Text("watchers")); }),
              "The field \"watchers\" of the record type \"bug\" cannot be searched or selected.");
    EXPECT_EQ(Thrown([&] {
                  query->BuildFilter(nullptr, Text("colour"), AdCompOp_t::kEqual, Text("x"), 1);
              }),
              "The record type \"bug\" has no field \"colour\".");
}

TEST_P(ResultSetTest, ValueThatIsNotTextIsRefused) {
    const AdQueryDefPtr query = Core().BuildQueryDef(Type("bug"), 0);
    const std::u16string half(1, char16_t{0xD800});
    EXPECT_NE(Thrown([&] {
                  query->BuildFilter(nullptr, Text("title"), AdCompOp_t::kEqual,
                                     Obx_String(std::u16string_view(half)), 1);
              }).find("is not valid text"),
              std::string::npos);
}

TEST_P(ResultSetTest, ColumnOutsideOfARowIsRefused) {
    const AdResultSetPtr result = Run("user", "login", {{"login", "ann"}});
    Obx_String value;
    EXPECT_NE(Thrown([&] { result->GetColumn(1, value, 0); }), "");
    int status = 0;
    result->FetchNext(status);
    EXPECT_NE(Thrown([&] { result->GetColumn(2, value, 0); }), "");
    EXPECT_NE(Thrown([&] { result->GetColumn(0, value, 0); }), "");
    result->FetchNext(status);
    EXPECT_NE(Thrown([&] { result->GetColumn(1, value, 0); }), "");
}

ON_EACH_LAYOUT(ResultSetTest);

}  // namespace

}  // namespace recorddb
