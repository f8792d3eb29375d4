#include <gtest/gtest.h>

#include <algorithm>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

namespace {

// Marks the bug 101, which came as core-1, as a duplicate of the bug 33, which came as core-9.
class DuplicatesTest : public ImporterTest {
  protected:
    DuplicatesTest() {
        m_importer->m_originalID = u"source_id";
        m_importer->m_originalID_value = u"core-1";
        m_importer->m_duplicateID = u"duplicate_of";
        m_importer->m_duplicateID_value = u"core-9";
    }

    int Mark() {
        AdEntityPtr bug = GivenOpenBug();
        return m_importer->MarkDuplicates(bug, m_error);
    }

    static Lines Found() {
        return Joined(Lines{"trace: MarkDuplicates begins",
                            "trace: GetResultSetWhere begins: filed=source_id, value=core-9"},
                      Search("source_id", "core-9"),
                      Lines{"trace: GetResultSetWhere ends successfully", "GetRowCount()"});
    }
    static Lines Marked() {
        return {"GetColumn(1, 0)", "GetEntity(bug, 33)", "bug.LookupActionDef(4)",
                "MarkEntityAsDuplicate(bug 101, bug 33, duplicate, 1)"};
    }
    static std::string Unbuild() { return "UnbuildResultSet(source_id = core-9)"; }
    std::string ErrorTrace() {
        return "trace: MarkDuplicates ends with error: " + m_error.ToUtf8();
    }

    static Obx_String SearchText(int id) {
        return Message(
            id, {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-9"}});
    }
    static Obx_String MarkText() {
        return Message(message_id::kMarkDuplicateFailed, {{u"_parentid_", u"dbid"},
                                                          {u"_parentidvalue_", u"33"},
                                                          {u"_entityid_", u"source_id"},
                                                          {u"_entityidvalue_", u"core-1"}});
    }
};

TEST_F(DuplicatesTest, FindsTheOriginalMarksAndSavesTheRecordAgain) {
    GivenRecords(u"core-9", {u"33"});
    EXPECT_EQ(Mark(), 1);
    ExpectErrorText(u"");
    ExpectStory(Joined(
        Found(), Marked(),
        Lines{"Validate()", "Commit()", Unbuild(), "trace: MarkDuplicates ends successfully"}));
}

TEST_F(DuplicatesTest, TheActionIsThatOfTheRecordsOwnType) {
    GivenRecords(u"core-9", {u"33"});
    Mark();
    EXPECT_EQ(Count(m_core.Log().Lines({CallLog::Kind::kQuestion}), "GetEntityDef()"), 1);
}

struct NeededText {
    const char* name;
    Obx_String OpenImporter::*member;
};

class NothingToMarkTest : public DuplicatesTest, public testing::WithParamInterface<NeededText> {};

TEST_P(NothingToMarkTest, SucceedsAndTouchesNothing) {
    (*m_importer).*GetParam().member = u"";
    m_error = u"earlier";
    EXPECT_EQ(Mark(), 1);
    ExpectErrorText(u"earlier");
    ExpectCallsAndQuestions({});
    ExpectTrace({"MarkDuplicates begins", "MarkDuplicates ends successfully"});
}

INSTANTIATE_TEST_SUITE_P(EmptyTexts, NothingToMarkTest,
                         testing::Values(NeededText{"duplicateField", &OpenImporter::m_duplicateID},
                                         NeededText{"duplicateReference",
                                                    &OpenImporter::m_duplicateID_value},
                                         NeededText{"identityField", &OpenImporter::m_originalID}),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST_F(DuplicatesTest, ARecordWithoutItsOwnIdentityIsMarkedToo) {
    m_importer->m_originalID_value = u"";
    GivenRecords(u"core-9", {u"33"});
    EXPECT_EQ(Mark(), 1);
    EXPECT_EQ(Calls().back(), Unbuild());
}

TEST_F(DuplicatesTest, AnOriginalThatIsNotFoundIsAnErrorWithNothingToUnbuild) {
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(SearchText(message_id::kRecordNotFound));
    ExpectStoryEnds(
        {"UnbuildQueryDef(source_id = core-9)", "trace: GetResultSetWhere ends", ErrorTrace()});
}

TEST_F(DuplicatesTest, AnEmptyResultSetIsAnErrorAndUnbuiltBeforeTheTrace) {
    GivenRowCount(u"core-9", 0);
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(SearchText(message_id::kRecordNotFound));
    ExpectStory(Joined(Found(), Lines{Unbuild(), ErrorTrace()}));
}

TEST_F(DuplicatesTest, TheErrorTextIsSetBeforeTheResultSetIsUnbuilt) {
    GivenRowCount(u"core-9", 0);
    m_core.OnCall("UnbuildResultSet").Throws(ThrownKind::kText);
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(SearchText(message_id::kRecordNotFound) + u"\nCaught a CString: boom");
}

class SeveralOriginalsTest : public DuplicatesTest, public testing::WithParamInterface<long> {};

TEST_P(SeveralOriginalsTest, AreAnErrorAndNothingIsMarked) {
    GivenRowCount(u"core-9", GetParam());
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(SearchText(message_id::kRecordAmbiguous));
    ExpectStory(Joined(Found(), Lines{Unbuild(), ErrorTrace()}));
}

INSTANTIATE_TEST_SUITE_P(Counts, SeveralOriginalsTest, testing::Values(2L, 3L, 100L));

class UncountedOriginalsTest : public DuplicatesTest, public testing::WithParamInterface<long> {};

TEST_P(UncountedOriginalsTest, AreSkippedAsASuccess) {
    GivenRowCount(u"core-9", GetParam());
    EXPECT_EQ(Mark(), 1);
    ExpectErrorText(u"");
    ExpectStory(Joined(Found(), Lines{"trace: MarkDuplicates ends successfully"}));
}

INSTANTIATE_TEST_SUITE_P(Counts, UncountedOriginalsTest, testing::Values(-1L, -2L, -100L));

TEST_F(DuplicatesTest, TheResultSetIsReleasedBeforeTheEndTrace) {
    const auto expectReleasedFirst = [&](const std::string& trace) {
        const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
        const auto end = std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
            return line.starts_with("trace: MarkDuplicates ends " + trace);
        });
        ASSERT_NE(end, lines.end());
        EXPECT_EQ(*(end - 1), "release: result set of source_id = core-9");
    };
    for (const long count : {0L, 2L}) {
        GivenRowCount(u"core-9", count);
        Mark();
        expectReleasedFirst("with error");
    }
    GivenRowCount(u"core-9", -1);
    Mark();
    expectReleasedFirst("successfully");
    GivenRecords(u"core-9", {u"33"});
    m_core.Matches(u"bug", u"source_id", u"core-9").count.reset();
    Mark();
    expectReleasedFirst("successfully");
    m_core.OnCall("GetEntity").Throws(ThrownKind::kMessage);
    Mark();
    expectReleasedFirst("with error");
}

TEST_F(DuplicatesTest, AMissingRecordIsABadValue) {
    GivenRecords(u"core-9", {u"33"});
    EXPECT_EQ(m_importer->MarkDuplicates(nullptr, m_error), 0);
    ExpectBadValue(u"entity != __null");
}

TEST_F(DuplicatesTest, AFailedSearchIsHiddenByTheNotFoundMessage) {
    m_core.OnCall("Execute").Throws(ThrownKind::kMessage);
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(SearchText(message_id::kRecordNotFound));
}

TEST_F(DuplicatesTest, ARecordThatBecomesInvalidIsReverted) {
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall("Validate").Reports(CoreMessage(u"wrong state"));
    m_error = u"earlier";
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"wrong state").FullMsg()}}));
    ExpectStory(
        Joined(Found(), Marked(), Lines{"Validate()", "Revert()", Unbuild(), ErrorTrace()}));
}

TEST_F(DuplicatesTest, AFailedCommitIsNotReverted) {
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    m_error = u"earlier";
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
    ExpectStory(
        Joined(Found(), Marked(), Lines{"Validate()", "Commit()", Unbuild(), ErrorTrace()}));
}

class MarkingFailsTest : public DuplicatesTest, public testing::WithParamInterface<std::string> {};

TEST_P(MarkingFailsTest, ByAMessageIsReportedWithBothRecords) {
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall(GetParam()).Throws(ThrownKind::kMessage);
    m_error = u"earlier";
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(MarkText());
    EXPECT_EQ(Trace().back(), "MarkDuplicates ends with error: " + MarkText().ToUtf8() +
                                  ". \n Core error: " + CoreMessage(u"boom").FullMsg().ToUtf8());
}

TEST_P(MarkingFailsTest, ByAMessageLeavesRecordAndResultSetAsTheyAre) {
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall(GetParam()).Throws(ThrownKind::kMessage);
    Mark();
    EXPECT_EQ(Count(Calls(), "Revert()"), 0);
    EXPECT_EQ(Count(Calls(), Unbuild()), 0);
    EXPECT_EQ(Count(Calls(), "Validate()"), 0);
}

INSTANTIATE_TEST_SUITE_P(GuardedCalls, MarkingFailsTest,
                         testing::Values("GetEntity", "LookupActionDef", "MarkEntityAsDuplicate"),
                         [](const auto& instance) { return instance.param; });

// Every kind of exception at every call, but for those that have a message of their own.
std::vector<ThrownCase> CasesAtTheBoundary() {
    std::vector<ThrownCase> cases = EachKindAt(
        {{"GetRowCount"}, {"GetColumn"}, {"Validate"}, {"Commit"}, {"UnbuildResultSet"}});
    for (const char* guarded : {"GetEntity", "LookupActionDef", "MarkEntityAsDuplicate"}) {
        for (const ThrownKind kind :
             {ThrownKind::kFoundation, ThrownKind::kText, ThrownKind::kUnknown}) {
            cases.push_back({{guarded}, kind});
        }
    }
    return cases;
}

class DuplicatesThrowsTest : public DuplicatesTest,
                             public testing::WithParamInterface<ThrownCase> {};

TEST_P(DuplicatesThrowsTest, AppendsToTheErrorTextAndUnbuildsNothing) {
    const CoreCall& call = GetParam().call;
    GivenRecords(u"core-9", {u"33"});
    AdEntityPtr bug = GivenOpenBug();
    m_core.OnCall(call.name, call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    EXPECT_EQ(m_importer->MarkDuplicates(bug, m_error), 0);
    ExpectErrorText(u"earlier" + AppendedTextOf(GetParam().kind, u"boom"));
    EXPECT_EQ("trace: " + Trace().back(), ErrorTrace());
    EXPECT_NE(Calls().back().find(call.name), std::string::npos) << "nothing else is called";
}

INSTANTIATE_TEST_SUITE_P(EveryCall, DuplicatesThrowsTest, testing::ValuesIn(CasesAtTheBoundary()),
                         NameOfCase);

TEST_F(DuplicatesTest, AnExceptionWhileRevertingAppendsToTheValidationFailure) {
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall("Validate").Reports(CoreMessage(u"wrong state"));
    m_core.OnCall("Revert").Throws(ThrownKind::kFoundation);
    EXPECT_EQ(Mark(), 0);
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"wrong state").FullMsg()}}) +
                    u"\nCaught a CException: boom");
}

TEST_F(DuplicatesTest, TheImportedRecordIsCommittedBeforeItIsMarked) {
    GivenConfiguration({.duplicateId = "duplicate_of"});
    GivenRecords(u"core-9", {u"33"});
    m_core.OnCall("Commit", 2).Reports(CoreMessage(u"disk full"));
    ImportRecords({{{"source_id", "core-1"}, {"duplicate_of", "core-9"}}});
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
    ExpectCalls(Joined(Lines{"ImportEntity(bug, '', null)", "SetFieldValue(source_id, core-1, 1)",
                             "Validate()", "Commit()"},
                       Search("source_id", "core-9"), Lines{"GetRowCount()"}, Marked(),
                       Lines{"Validate()", "Commit()", Unbuild()}));
}

TEST_F(DuplicatesTest, OnUpdateBothResultSetsAreGivenBackTheInnerOneFirst) {
    GivenConfiguration({.duplicateId = "duplicate_of", .updateRecord = true});
    GivenRecords(u"core-1", {u"101"});
    GivenRecords(u"core-9", {u"33"});
    ImportRecords({{{"source_id", "core-1"}, {"duplicate_of", "core-9"}}});
    ExpectErrorText(u"");
    const Lines calls = Calls();
    EXPECT_EQ(Lines(calls.end() - 3, calls.end()),
              (Lines{"Commit()", Unbuild(), "UnbuildResultSet(source_id = core-1)"}));
}

}  // namespace
