#include <gtest/gtest.h>

#include <algorithm>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

// Update when the record may be created instead, and when the core throws.

namespace {

class UpdateInsertTest : public ImporterTest {
  protected:
    void SetUp() override { GivenConfiguration({.updateRecord = true, .updateInsert = true}); }

    static Lines Created() {
        return {"ImportEntity(bug, '', null)", "SetFieldValue(source_id, core-1, 1)", "Validate()",
                "Commit()"};
    }
};

TEST_F(UpdateInsertTest, ARecordThatIsNotFoundIsCreated) {
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(u"");
    ExpectCalls(Joined(Search("source_id", "core-1"), Created()));
}

TEST_F(UpdateInsertTest, TheRecordMapIsSetUpAgainAndOnlyCreationTracesItsEnd) {
    ImportRecords({{{"source_id", "core-1"}}});
    const Lines trace = Trace();
    EXPECT_EQ(Lines(trace.begin() + 6, trace.begin() + 9),
              (Lines{"GetResultSetWhere ends", "ImportRecord begins", "SetupRecordMap begins"}));
    EXPECT_EQ(Count(trace, "ImportRecord ends"), 1);
    EXPECT_EQ(Count(trace, "UpdateRecord ends successfully"), 0);
    EXPECT_EQ(Count(trace, "CleanupRecordMap"), 1);
    ExpectCleanRecordMap();
}

TEST_F(UpdateInsertTest, AnEmptyResultSetIsReleasedButNotUnbuilt) {
    GivenRowCount(u"core-1", 0);
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(u"");
    ExpectCalls(Joined(Search("source_id", "core-1"), Lines{"GetRowCount()"}, Created()));
}

TEST_F(UpdateInsertTest, AnEmptyResultSetIsReleasedBeforeTheRecordIsCreated) {
    GivenRowCount(u"core-1", 0);
    ImportRecords({{{"source_id", "core-1"}}});
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
    const auto creation = std::find(lines.begin(), lines.end(), "trace: ImportRecord begins");
    ASSERT_NE(creation, lines.end());
    EXPECT_EQ(*(creation - 1), "release: result set of source_id = core-1");
}

TEST_F(UpdateInsertTest, ReturnsWhatCreationReturns) {
    GivenCurrentRecord({{"source_id", "core-1"}});
    EXPECT_EQ(m_importer->UpdateRecord(m_error), 1);
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    GivenCurrentRecord({{"source_id", "core-1"}});
    EXPECT_EQ(m_importer->UpdateRecord(m_error), 0);
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
}

TEST_F(UpdateInsertTest, OneRecordThatIsFoundIsUpdated) {
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"}}});
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', 33)"), 1);
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, '', null)"), 0);
}

TEST_F(UpdateInsertTest, SeveralRecordsAreAnErrorAllTheSame) {
    GivenRecords(u"core-1", {u"33", u"34"});
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(
        Message(message_id::kRecordAmbiguous,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-1"}}));
}

TEST_F(UpdateInsertTest, WithoutAnIdentityTheRecordIsCreatedWithoutASearch) {
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    ExpectCalls({"ImportEntity(bug, '', null)", "SetFieldValue(title, Crash, 1)", "Validate()",
                 "Commit()"});
}

TEST_F(UpdateInsertTest, WithoutAConfiguredIdentityTheRecordIsCreatedWithoutASearch) {
    GivenConfiguration({.originalId = "", .updateRecord = true, .updateInsert = true});
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(u"");
    ExpectCalls(Created());
}

TEST_F(UpdateInsertTest, WithoutAnIdentityAndWithoutInsertTheRecordIsNotFound) {
    GivenConfiguration({.updateRecord = true});
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(
        Message(message_id::kRecordNotFound,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u""}}));
    ExpectNoCalls();
}

class FailedSearchTest : public UpdateInsertTest, public testing::WithParamInterface<ThrownKind> {
  protected:
    // What a search that fails leaves in an empty error text.
    static Obx_String SearchText() {
        switch (GetParam()) {
            case ThrownKind::kFoundation:
                return u"Caught a CException: \nboom";
            case ThrownKind::kText:
                return u"Caught a CString: ";
            case ThrownKind::kMessage:
            case ThrownKind::kUnknown:
                break;
        }
        return AppendedTextOf(GetParam(), u"boom");
    }
};

TEST_P(FailedSearchTest, MakesCreationGiveUpAtOnce) {
    m_core.OnCall("Execute").Throws(GetParam());
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(SearchText());
    EXPECT_EQ(Calls().back(), "Execute()");
    ExpectStoryEnds({"trace: ImportRecord begins", "trace: SetupRecordMap begins",
                     "trace: SetupRecordMap ends", "trace: CleanupRecordMap",
                     "trace: ImportRecord ends with error: " + SearchText().ToUtf8(),
                     "trace: Import ends with error: " + SearchText().ToUtf8()});
}

TEST_P(FailedSearchTest, IsHiddenByTheNotFoundMessageWithoutInsert) {
    GivenConfiguration({.updateRecord = true});
    m_core.OnCall("Execute").Throws(GetParam());
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(
        Message(message_id::kRecordNotFound,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-1"}}));
}

INSTANTIATE_TEST_SUITE_P(AllKinds, FailedSearchTest, testing::ValuesIn(kThrownKinds), NameOfKind);

class RecordUpdateThrowsTest : public ImporterTest,
                               public testing::WithParamInterface<ThrownCase> {};

TEST_P(RecordUpdateThrowsTest, AppendsToTheErrorTextAndCleansNothingUp) {
    GivenConfiguration({.updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    ImportRecords({{{"source_id", "core-1"}, {"title", "Crash"}}});
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds({"trace: UpdateRecord ends with error: " + m_error.ToUtf8(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    EXPECT_TRUE(Calls().back().starts_with(GetParam().call.name)) << "nothing else is called";
    EXPECT_EQ(Count(Trace(), "CleanupRecordMap"), 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(EveryCall, RecordUpdateThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetRowCount"},
                                                       {"GetColumn"},
                                                       {"ImportEntity"},
                                                       {"Validate"},
                                                       {"Commit"},
                                                       {"UnbuildResultSet"}})),
                         NameOfCase);

class NotFoundMessageThrowsTest : public ImporterTest,
                                  public testing::WithParamInterface<ThrownKind> {};

TEST_P(NotFoundMessageThrowsTest, EndsTheUpdateByTheException) {
    GivenConfiguration({.updateRecord = true});
    m_core.OnCall("GetName", 3).Throws(GetParam());
    ImportRecords({{{"source_id", "core-1"}}});
    ExpectErrorText(AppendedTextOf(GetParam(), u"boom"));
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(AllKinds, NotFoundMessageThrowsTest, testing::ValuesIn(kThrownKinds),
                         NameOfKind);

TEST_F(UpdateInsertTest, TheIdentityLeftByAnExceptionShowsInTheNextBeginTrace) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("Commit", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"source_id", "core-1"}}});
    m_core.ForgetCalls();
    ImportRecords({{{"source_id", "core-2"}}});
    EXPECT_EQ(Trace().at(2),
              "UpdateRecord begins: m_originalID=source_id, m_originalID_value=core-1");
}

}  // namespace
