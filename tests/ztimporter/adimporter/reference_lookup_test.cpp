#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

namespace {

// Values of the bug's field "owner" are looked up among the users by their field "mail".
class ReferenceLookupTest : public ImporterTest {
  protected:
    int LookUp(const Obx_String& value, const Obx_String& uniqueKey = u"login") {
        AdEntityPtr bug = GivenOpenBug();
        m_value = value;
        const int result =
            m_importer->IsReferenceIDValid(bug, u"owner", m_value, u"mail", uniqueKey, m_error);
        return result;
    }

    ScriptedMatches& Users(const Obx_String& mail) {
        return m_core.Matches(u"user", u"mail", mail);
    }

    void ExpectFailure(int id) {
        ExpectErrorText(Message(
            id,
            {{u"_entitydef_", u"bug"}, {u"_fieldname_", u"owner"}, {u"_refentitydef_", u"user"}}));
        EXPECT_EQ(m_value.ToUtf8(), "a@b");
    }

    static Lines QueryCalls() {
        return {"BuildQueryDef(user, 0)", "SelectField(1, path of login)",
                "BuildFilter(null, mail, 1, a@b, 1)", "BuildResultSet(mail = a@b)"};
    }
    static Lines RunCalls() { return {"Prepare()", "Execute()", "FetchNext(1)", "GetRowCount()"}; }
    static Lines UnbuildCalls() {
        return {"UnbuildResultSet(mail = a@b)", "UnbuildQueryDef(mail = a@b)"};
    }
    static std::string BeginTrace() {
        return "IsReferenceIDValid begins, fieldName: owner, fieldValue: a@b, "
               "referencedFieldName: mail, uniqueKey: login";
    }

    Obx_String m_value;
};

TEST_F(ReferenceLookupTest, TheValueBecomesTheKeyOfTheOneRecordFound) {
    Users(u"a@b").rows = {u"ann"};
    EXPECT_EQ(LookUp(u"a@b"), 1);
    EXPECT_EQ(m_value, u"ann");
    ExpectErrorText(u"");
}

TEST_F(ReferenceLookupTest, RunsOneQueryAndGivesEverythingBack) {
    Users(u"a@b").rows = {u"ann"};
    LookUp(u"a@b");
    ExpectCalls(Joined(QueryCalls(), RunCalls(), Lines{"GetColumn(1, 0)"}, UnbuildCalls()));
    ExpectTrace({BeginTrace(), "IsReferenceIDValid ends"});
}

TEST_F(ReferenceLookupTest, QueryAndResultSetAreReleasedBeforeTheEndTrace) {
    const auto ends = [&](const std::string& trace) {
        const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
        // The last line is the record's own end, after the operation.
        EXPECT_EQ(Lines(lines.end() - 4, lines.end() - 1),
                  (Lines{"release: result set of mail = a@b", "release: query of mail = a@b",
                         "trace: IsReferenceIDValid ends" + trace}));
    };
    LookUp(u"a@b");
    ends(" with error: " + m_error.ToUtf8());
    Users(u"a@b").rows = {u"ann"};
    LookUp(u"a@b");
    ends("");
}

TEST_F(ReferenceLookupTest, TheEndIsTracedAfterTheUnbuilding) {
    Users(u"a@b").rows = {u"ann"};
    LookUp(u"a@b");
    ExpectStoryEnds(Joined(UnbuildCalls(), Lines{"trace: IsReferenceIDValid ends"}));
}

TEST_F(ReferenceLookupTest, TheReferencedTypeIsFoundThroughTheRecordsOwnType) {
    Users(u"a@b").rows = {u"ann"};
    LookUp(u"a@b");
    const Lines questions = m_core.Log().Lines({CallLog::Kind::kQuestion});
    EXPECT_EQ(questions, (Lines{"GetEntityDef()", "bug.GetFieldDef(owner, 0)",
                                "owner.GetReferenceEntityDef()", "user.GetFieldPath(login, 0)"}));
}

TEST_F(ReferenceLookupTest, AValueThatIsAlreadyTheKeyIsLookedUpAllTheSame) {
    m_core.Matches(u"user", u"mail", u"ann").rows = {u"ann"};
    EXPECT_EQ(LookUp(u"ann"), 1);
    EXPECT_EQ(m_value, u"ann");
    EXPECT_EQ(Calls().back(), "UnbuildQueryDef(mail = ann)");
}

struct NothingToLookUp {
    const char* name;
    Obx_String field;
    Obx_String value;
    Obx_String key;
};

class NothingToLookUpTest : public ReferenceLookupTest,
                            public testing::WithParamInterface<NothingToLookUp> {};

TEST_P(NothingToLookUpTest, SucceedsWithoutAQuery) {
    AdEntityPtr bug = GivenOpenBug();
    const NothingToLookUp& given = GetParam();
    Obx_String value = given.value;
    EXPECT_EQ(m_importer->IsReferenceIDValid(bug, given.field, value, u"mail", given.key, m_error),
              1);
    EXPECT_EQ(value, given.value);
    ExpectCallsAndQuestions({});
    EXPECT_EQ(Trace().size(), 2U);
    EXPECT_EQ(Trace().back(), "IsReferenceIDValid ends");
}

INSTANTIATE_TEST_SUITE_P(EmptyTexts, NothingToLookUpTest,
                         testing::Values(NothingToLookUp{"field", u"", u"a@b", u"login"},
                                         NothingToLookUp{"value", u"owner", u"", u"login"},
                                         NothingToLookUp{"key", u"owner", u"a@b", u""}),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(ReferenceLookupTest, AnEmptyReferencedFieldIsNotTested) {
    AdEntityPtr bug = GivenOpenBug();
    m_core.Matches(u"user", u"", u"a@b").rows = {u"ann"};
    Obx_String value = u"a@b";
    EXPECT_EQ(m_importer->IsReferenceIDValid(bug, u"owner", value, u"", u"login", m_error), 1);
    EXPECT_EQ(value, u"ann");
}

TEST_F(ReferenceLookupTest, NoRecordFoundIsAnError) {
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceNotFound);
    ExpectCalls(Joined(QueryCalls(), RunCalls(), UnbuildCalls()));
}

TEST_F(ReferenceLookupTest, AFailureIsTracedAfterTheUnbuilding) {
    LookUp(u"a@b");
    ExpectStoryEnds(Joined(
        UnbuildCalls(), Lines{"trace: IsReferenceIDValid ends with error: " + m_error.ToUtf8()}));
}

TEST_F(ReferenceLookupTest, TwoRecordsFoundAreAnErrorAndNoneIsChosen) {
    Users(u"a@b").rows = {u"ann", u"bea"};
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceAmbiguous);
    ExpectCalls(Joined(QueryCalls(), RunCalls(), UnbuildCalls()));
}

TEST_F(ReferenceLookupTest, SeveralRecordsAreAnErrorAlsoWhenNoneCouldBeFetched) {
    Users(u"a@b") = {.rows = {}, .count = 2, .status = 0};
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceAmbiguous);
}

TEST_F(ReferenceLookupTest, OneRecordThatCannotBeFetchedIsNotFound) {
    Users(u"a@b") = {.rows = {u"ann"}, .count = 1, .status = 0};
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceNotFound);
}

TEST_F(ReferenceLookupTest, ANegativeCountIsNotFound) {
    Users(u"a@b") = {.rows = {u"ann"}, .count = -1, .status = 1};
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceNotFound);
    ExpectCalls(Joined(QueryCalls(), RunCalls(), UnbuildCalls()));
}

TEST_F(ReferenceLookupTest, NoResultSetIsNotFoundAndOnlyTheQueryIsUnbuilt) {
    m_core.OnCall("BuildResultSet").ReturnsNull();
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceNotFound);
    ExpectCalls(Joined(QueryCalls(), Lines{"UnbuildQueryDef(mail = a@b)"}));
}

TEST_F(ReferenceLookupTest, AFailureReplacesTheErrorText) {
    m_error = u"earlier";
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectFailure(message_id::kReferenceNotFound);
}

TEST_F(ReferenceLookupTest, ANullRecordIsRaisedToTheCaller) {
    Obx_String value = u"a@b";
    try {
        m_importer->IsReferenceIDValid(nullptr, u"owner", value, u"mail", u"login", m_error);
        FAIL() << "nothing was thrown";
    } catch (PaMsgException* exception) {
        EXPECT_EQ(exception->Messages().front().ID(), AdGetBadValue0MsgID());
        const Obx_String text = AdExtractFirstMsgAndDeleteException(exception);
        EXPECT_NE(text.Find(u"impEntity != __null (ztimporter/adimporter, line "), -1)
            << text.ToUtf8();
    }
    ExpectErrorText(u"");
    ExpectStory({"trace: " + BeginTrace()});
}

TEST_F(ReferenceLookupTest, ANullRecordIsRaisedEvenWhenThereIsNothingToLookUp) {
    Obx_String value;
    try {
        m_importer->IsReferenceIDValid(nullptr, u"", value, u"", u"", m_error);
        FAIL() << "nothing was thrown";
    } catch (PaMsgException* exception) {
        exception->Delete();
    }
}

class ReferenceLookupThrowsTest : public ReferenceLookupTest,
                                  public testing::WithParamInterface<ThrownCase> {};

TEST_P(ReferenceLookupThrowsTest, AppendsToTheErrorTextAndUnbuildsNothing) {
    Users(u"a@b").rows = {u"ann"};
    AdEntityPtr bug = GivenOpenBug();
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    Obx_String value = u"a@b";
    EXPECT_EQ(m_importer->IsReferenceIDValid(bug, u"owner", value, u"mail", u"login", m_error), 0);
    const Obx_String text = u"earlier" + AppendedTextOf(GetParam().kind, u"boom");
    ExpectErrorText(text);
    ExpectTrace({BeginTrace(), "IsReferenceIDValid ends with error: " + text.ToUtf8()});
    const Lines calls = Calls();
    const bool throwsFromUnbuild = GetParam().call.name.starts_with("Unbuild");
    EXPECT_TRUE(calls.empty() || throwsFromUnbuild || !calls.back().starts_with("Unbuild"));
}

INSTANTIATE_TEST_SUITE_P(EveryCall, ReferenceLookupThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetEntityDef"},
                                                       {"GetFieldDef"},
                                                       {"GetReferenceEntityDef"},
                                                       {"BuildQueryDef"},
                                                       {"GetFieldPath"},
                                                       {"SelectField"},
                                                       {"BuildFilter"},
                                                       {"BuildResultSet"},
                                                       {"Prepare"},
                                                       {"Execute"},
                                                       {"FetchNext"},
                                                       {"GetRowCount"},
                                                       {"GetColumn"},
                                                       {"UnbuildResultSet"},
                                                       {"UnbuildQueryDef"}})),
                         NameOfCase);

class ReferenceMessageThrowsTest : public ReferenceLookupTest,
                                   public testing::WithParamInterface<ThrownCase> {};

TEST_P(ReferenceMessageThrowsTest, AppendsWhatWasThrownWhileTheMessageWasBuilt) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    EXPECT_EQ(LookUp(u"a@b"), 0);
    ExpectErrorText(u"earlier" + AppendedTextOf(GetParam().kind, u"boom"));
    ExpectCalls(Joined(QueryCalls(), RunCalls()));
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, ReferenceMessageThrowsTest,
    testing::ValuesIn(EachKindAt({{"GetName"}, {"GetFieldReferencedEntityDefName"}})), NameOfCase);

}  // namespace
