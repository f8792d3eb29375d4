#include <gtest/gtest.h>

#include <algorithm>

#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"
#include "ztimporter/importrecordparser.h"

namespace {

class RecordMapTest : public ImporterTest {
  protected:
    RecordMapTest() {
        m_importer->m_originalID = u"source_id";
        m_importer->m_duplicateID = u"duplicate_of";
    }

    void SetUpRecord(const Pairs& fields) {
        GivenCurrentRecord(fields);
        m_importer->SetupRecordMap(m_error);
    }

    void ExpectValues(const char* state, const char* originalId, const char* duplicateId) {
        EXPECT_EQ(m_importer->m_recordState.ToUtf8(), state);
        EXPECT_EQ(m_importer->m_originalID_value.ToUtf8(), originalId);
        EXPECT_EQ(m_importer->m_duplicateID_value.ToUtf8(), duplicateId);
    }
};

TEST_F(RecordMapTest, HoldsTheFieldsOfTheRecord) {
    SetUpRecord({{"title", "Crash"}, {"notes", " as is "}});
    ExpectRecordMap({{"title", "Crash"}, {"notes", " as is "}});
    ExpectErrorText(u"");
}

TEST_F(RecordMapTest, TracesItsBeginningAndEnd) {
    SetUpRecord({{"title", "Crash"}});
    ExpectStory({"trace: SetupRecordMap begins", "trace: SetupRecordMap ends"});
}

TEST_F(RecordMapTest, EmptyFieldsDisappear) {
    SetUpRecord({{"title", ""}, {"notes", "n"}, {"owner", ""}});
    ExpectRecordMap({{"notes", "n"}});
}

TEST_F(RecordMapTest, EmptyIdentityStateAndDuplicateFieldsDisappearAndLeaveNoValue) {
    m_importer->m_importState = 1;
    SetUpRecord({{"state", ""}, {"source_id", ""}, {"duplicate_of", ""}});
    ExpectRecordMap({});
    ExpectValues("", "", "");
}

TEST_F(RecordMapTest, WithoutImportStateTheStateIsDropped) {
    SetUpRecord({{"state", "OPEN"}, {"title", "Crash"}});
    ExpectRecordMap({{"title", "Crash"}});
    ExpectValues("", "", "");
}

TEST_F(RecordMapTest, WithImportStateTheStateIsTakenOut) {
    m_importer->m_importState = 1;
    SetUpRecord({{"STATE", "OPEN"}, {"title", "Crash"}});
    ExpectRecordMap({{"title", "Crash"}});
    ExpectValues("OPEN", "", "");
}

TEST_F(RecordMapTest, ATypeWithoutStatesHasNoStateField) {
    m_importer->m_entityDef = &m_user;
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}});
    ExpectRecordMap({{"state", "OPEN"}});
    ExpectValues("", "", "");
}

TEST_F(RecordMapTest, ATypeWithoutStatesIsNotAskedForItsStateField) {
    m_importer->m_entityDef = &m_user;
    SetUpRecord({{"login", "ann"}});
    const Lines questions = m_core.Log().Lines({CallLog::Kind::kQuestion});
    EXPECT_NE(std::find(questions.begin(), questions.end(), "user.GetType()"), questions.end());
    EXPECT_EQ(std::find(questions.begin(), questions.end(), "user.GetStateFieldDef()"),
              questions.end());
}

TEST_F(RecordMapTest, OnlyTypesOfTheKindWithStatesHaveAStateField) {
    m_core.OnCall("GetType").ReturnsNumber(3);
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}});
    ExpectRecordMap({{"state", "OPEN"}});
    ExpectValues("", "", "");
}

TEST_F(RecordMapTest, ANullStateFieldIsABadValue) {
    m_core.OnCall("GetStateFieldDef").ReturnsNull();
    SetUpRecord({{"title", "Crash"}});
    ExpectBadValue(u"stateFieldDef != __null");
}

class NamelessFieldTest : public RecordMapTest, public testing::WithParamInterface<std::string> {
  protected:
    void SetUpNamelessField() {
        m_importer->m_entityDef = &m_user;
        m_importer->m_importState = 1;
        GivenPacket("<record><field" + GetParam() + ">x</field></record>");
        ASSERT_EQ(m_importer->m_recordParser->NextRecord(), 1);
        m_importer->SetupRecordMap(m_error);
    }
};

TEST_P(NamelessFieldTest, StaysInTheMapOfATypeWithoutStates) {
    SetUpNamelessField();
    ExpectRecordMap({{"", "x"}});
    ExpectValues("", "", "");
}

TEST_P(NamelessFieldTest, IsTheDuplicateReferenceThatWasNotConfigured) {
    m_importer->m_duplicateID = u"";
    SetUpNamelessField();
    ExpectRecordMap({});
    ExpectValues("", "", "x");
}

TEST_P(NamelessFieldTest, IsTheIdentityThatWasNotConfigured) {
    m_importer->m_originalID = u"";
    m_importer->m_duplicateID = u"";
    SetUpNamelessField();
    ExpectRecordMap({{"", "x"}});
    ExpectValues("", "x", "");
}

TEST_P(NamelessFieldTest, IsRefusedWhenTheRecordIsWritten) {
    GivenConfiguration({.recordType = "user", .originalId = "login", .duplicateId = "duplicate"});
    Import("<record><field" + GetParam() + ">x</field></record>");
    ExpectErrorText(u"\n" + CoreMessage(u"no field ").FullMsg());
    ExpectCalls({"ImportEntity(user, '', null)", "Revert()"});
}

INSTANTIATE_TEST_SUITE_P(Names, NamelessFieldTest, testing::Values("", " name=\"\""),
                         [](const auto& instance) {
                             return instance.param.empty() ? "Missing" : "Empty";
                         });

TEST_F(RecordMapTest, TheIdentityStaysInTheMap) {
    SetUpRecord({{"source_id", "core-1"}});
    ExpectRecordMap({{"source_id", "core-1"}});
    ExpectValues("", "core-1", "");
}

TEST_F(RecordMapTest, TheDuplicateReferenceIsTakenOut) {
    SetUpRecord({{"duplicate_of", "core-2"}, {"title", "Crash"}});
    ExpectRecordMap({{"title", "Crash"}});
    ExpectValues("", "", "core-2");
}

TEST_F(RecordMapTest, ConfiguredNamesMatchWithoutRegardToCase) {
    SetUpRecord({{"SOURCE_ID", "core-1"}, {"Duplicate_Of", "core-2"}});
    ExpectRecordMap({{"SOURCE_ID", "core-1"}});
    ExpectValues("", "core-1", "core-2");
}

TEST_F(RecordMapTest, AStateThatIsAlsoTheIdentityIsOnlyTheState) {
    m_importer->m_originalID = u"state";
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}});
    ExpectRecordMap({});
    ExpectValues("OPEN", "", "");
}

TEST_F(RecordMapTest, AStateThatIsAlsoTheDuplicateReferenceIsOnlyTheState) {
    m_importer->m_duplicateID = u"state";
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}});
    ExpectRecordMap({});
    ExpectValues("OPEN", "", "");
}

TEST_F(RecordMapTest, AnIdentityThatIsAlsoTheDuplicateReferenceIsOnlyTheIdentity) {
    m_importer->m_duplicateID = u"source_id";
    SetUpRecord({{"source_id", "core-1"}});
    ExpectRecordMap({{"source_id", "core-1"}});
    ExpectValues("", "core-1", "");
}

TEST_F(RecordMapTest, TheStateOfTheRecordBeforeIsForgottenEvenWithoutCleanUp) {
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}});
    SetUpRecord({{"title", "Crash"}});
    ExpectValues("", "", "");
}

TEST_F(RecordMapTest, WithoutCleanUpTheRecordBeforeCarriesOver) {
    SetUpRecord({{"source_id", "core-1"}, {"duplicate_of", "core-2"}, {"title", "Crash"}});
    SetUpRecord({{"notes", "n"}, {"title", "Hang"}});
    ExpectRecordMap({{"source_id", "core-1"}, {"title", "Hang"}, {"notes", "n"}});
    ExpectValues("", "core-1", "core-2");
}

TEST_F(RecordMapTest, AnErrorThatIsThereAlreadyStaysAndStopsNothing) {
    m_error = u"earlier";
    SetUpRecord({{"title", "Crash"}});
    ExpectErrorText(u"earlier");
    ExpectRecordMap({{"title", "Crash"}});
}

TEST_F(RecordMapTest, CleanUpEmptiesEverything) {
    m_importer->m_importState = 1;
    SetUpRecord({{"state", "OPEN"}, {"source_id", "core-1"}, {"duplicate_of", "core-2"}});
    m_core.ForgetCalls();
    m_importer->CleanupRecordMap();
    ExpectCleanRecordMap();
    ExpectStory({"trace: CleanupRecordMap"});
}

TEST_F(RecordMapTest, MalformedXmlLeavesTheFieldsReadSoFar) {
    GivenPacket("<record><field name=\"title\">Crash</field><field</record>");
    m_importer->SetupRecordMap(m_error);
    ExpectXmlError(u"line 1, column 48: not well-formed (invalid token)");
    ExpectRecordMap({{"title", "Crash"}});
}

TEST_F(RecordMapTest, TheRecordIsReadBeforeTheTypeIsAsked) {
    GivenPacket("<record><field</record>");
    m_importer->SetupRecordMap(m_error);
    ExpectCallsAndQuestions({});
}

class RecordMapThrowsTest : public RecordMapTest, public testing::WithParamInterface<ThrownCase> {};

TEST_P(RecordMapThrowsTest, AppendsToTheErrorTextAndEndsWithoutTheEndTrace) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    SetUpRecord({{"title", "Crash"}});
    const Obx_String text = u"earlier" + AppendedTextOf(GetParam().kind, u"boom");
    ExpectErrorText(text);
    ExpectTrace({"SetupRecordMap begins", "SetupRecordMap ends with error: " + text.ToUtf8()});
}

TEST_P(RecordMapThrowsTest, LeavesWhatTheMapHolds) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    SetUpRecord({{"title", "Crash"}, {"notes", ""}, {"source_id", "core-1"}});
    ExpectRecordMap({{"title", "Crash"}, {"notes", ""}, {"source_id", "core-1"}});
    ExpectValues("", "", "");
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, RecordMapThrowsTest,
    testing::ValuesIn(EachKindAt({{"GetType"}, {"GetStateFieldDef"}, {"GetName"}})), NameOfCase);

}  // namespace
