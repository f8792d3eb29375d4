#include <gtest/gtest.h>

#include <utility>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

namespace {

// Creation of records: ImportRecord.
class RecordImportTest : public ImporterTest {
  protected:
    // Creates one record of a packet.
    void Create(const Pairs& fields = {{"source_id", "core-1"}, {"title", "Crash"}}) {
        ImportRecords({fields});
    }

    static Lines Begin() {
        return {"trace: ImportRecord begins", "trace: SetupRecordMap begins",
                "trace: SetupRecordMap ends"};
    }
    static Lines Written() {
        return {"ImportEntity(bug, '', null)", "trace: SetupFieldValues begins",
                "SetFieldValue(source_id, core-1, 1)", "SetFieldValue(title, Crash, 1)",
                "trace: SetupFieldValues ends"};
    }
    static Lines NoHistory() {
        return {"trace: ReallyImportHistory begins",
                "trace: ReallyImportHistory ends with no history imported"};
    }
    // The story from the operation's beginning to the end of the packet.
    void ExpectRecordStory(const Lines& lines) {
        const Lines end = {m_error.IsEmpty()
                               ? "trace: Import ends successfully."
                               : "trace: Import ends with error: " + m_error.ToUtf8()};
        const Lines story = Joined(Lines{"trace: Import is record data"}, lines, end);
        ExpectStoryEnds(story);
        EXPECT_EQ(m_core.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kTrace}).size(),
                  story.size() + 1);
    }

    std::string ErrorTrace() { return "trace: ImportRecord ends with error: " + m_error.ToUtf8(); }

    static Pairs WithHistory() {
        return {{"title", "Crash"},
                {"log", HistoryLines({{"7", "2024-01-01 10:00:00", "ann", "submit", "-", "NEW"}})}};
    }
};

TEST_F(RecordImportTest, OpensWritesValidatesAndCommits) {
    GivenConfiguration();
    Create();
    ExpectErrorText(u"");
    ExpectRecordStory(Joined(Begin(), Written(), Lines{"Validate()", "Commit()"}, NoHistory(),
                             Lines{"trace: CleanupRecordMap", "trace: ImportRecord ends"}));
    ExpectCleanRecordMap();
}

TEST_F(RecordImportTest, TheRecordIsReleasedBeforeTheEndTrace) {
    GivenConfiguration();
    Create();
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              (Lines{"trace: CleanupRecordMap", "release: bug 101", "trace: ImportRecord ends",
                     "trace: Import ends successfully."}));
}

TEST_F(RecordImportTest, TheStateGoesToTheNewRecord) {
    GivenConfiguration({.importState = true});
    Create({{"state", "OPEN"}, {"title", "Crash"}});
    ExpectCalls({"ImportEntity(bug, OPEN, null)", "SetFieldValue(title, Crash, 1)", "Validate()",
                 "Commit()"});
}

TEST_F(RecordImportTest, ARecordWithoutFieldsIsCreatedAllTheSame) {
    GivenConfiguration();
    Create({});
    ExpectErrorText(u"");
    ExpectCalls({"ImportEntity(bug, '', null)", "Validate()", "Commit()"});
}

TEST_F(RecordImportTest, ReturnsWhetherTheRecordWasCreated) {
    GivenCurrentRecord({{"title", "Crash"}});
    EXPECT_EQ(m_importer->ImportRecord(m_error), 1);
    GivenCurrentRecord({{"title", "Crash"}});
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    EXPECT_EQ(m_importer->ImportRecord(m_error), 0);
}

TEST_F(RecordImportTest, AnEarlierErrorMakesItGiveUpAfterTheRecordMap) {
    GivenCurrentRecord({{"title", "Crash"}});
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ImportRecord(m_error), 0);
    ExpectErrorText(u"earlier");
    ExpectStory(Joined(Begin(), Lines{"trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordImportTest, ARefusedFieldRevertsTheRecord) {
    GivenConfiguration();
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"too long");
    Create();
    ExpectErrorText(u"too long");
    ExpectRecordStory(Joined(
        Begin(), Lines{"ImportEntity(bug, '', null)", "trace: SetupFieldValues begins",
                       "SetFieldValue(source_id, core-1, 1)", "SetFieldValue(title, Crash, 1)",
                       "trace: SetupFieldValues ends with error: too long", "Revert()",
                       "trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordImportTest, AnInvalidRecordIsReverted) {
    GivenConfiguration();
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    Create();
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"title is required").FullMsg()}}));
    ExpectRecordStory(
        Joined(Begin(), Written(),
               Lines{"Validate()", "Revert()", "trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordImportTest, AFailedCommitIsReverted) {
    GivenConfiguration();
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    Create();
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
    ExpectRecordStory(Joined(
        Begin(), Written(),
        Lines{"Validate()", "Commit()", "Revert()", "trace: CleanupRecordMap", ErrorTrace()}));
    ExpectCleanRecordMap();
}

class GivenUpRecordTest : public RecordImportTest,
                          public testing::WithParamInterface<std::string> {};

TEST_P(GivenUpRecordTest, DropsItsPendingHistory) {
    GivenConfiguration();
    if (GetParam() == "SetFieldValue") {
        m_core.OnCall(GetParam()).ReturnsText(u"refused");
    } else {
        m_core.OnCall(GetParam()).Reports(CoreMessage(u"refused"));
    }
    Pairs fields = WithHistory();
    std::swap(fields.front(), fields.back());
    Create(fields);
    ExpectNoPendingHistory();
    EXPECT_TRUE(m_core.ImportedHistory().empty());
}

INSTANTIATE_TEST_SUITE_P(BeforeOrAtCommit, GivenUpRecordTest,
                         testing::Values("SetFieldValue", "Validate", "Commit"),
                         [](const auto& instance) { return instance.param; });

TEST_F(RecordImportTest, PendingHistoryIsImportedAfterTheCommit) {
    GivenConfiguration();
    Create(WithHistory());
    ExpectErrorText(u"");
    ExpectCalls({"ImportEntity(bug, '', null)", "SetFieldValue(title, Crash, 1)",
                 "GetFieldValue(dbid)", "dbid.GetValue()", "Validate()", "Commit()",
                 "ImportHistoryData(1 entries, -1, 0 problems, '', null, null)",
                 "CommitImportHistory()"});
    ASSERT_EQ(m_core.ImportedHistory().size(), 1U);
    EXPECT_EQ(m_core.ImportedHistory().front().recordId, 101);
}

TEST_F(RecordImportTest, AHistoryFailureLeavesTheRecordCommitted) {
    GivenConfiguration({.duplicateId = "duplicate_of"});
    m_core.OnCall("ImportHistoryData").ReturnsText(u"bad entry");
    Create(WithHistory());
    ExpectErrorText(u"bad entry");
    ExpectStoryEnds({"Commit()", "trace: ReallyImportHistory begins",
                     "ImportHistoryData(1 entries, -1, 0 problems, '', null, null)",
                     "CommitImportHistory()", "trace: ReallyImportHistory error: bad entry",
                     "trace: CleanupRecordMap", ErrorTrace(),
                     "trace: Import ends with error: bad entry"});
    ExpectCleanRecordMap();
}

TEST_F(RecordImportTest, WithoutADuplicateFieldDuplicatesAreNotLookedAt) {
    GivenConfiguration();
    Create();
    EXPECT_EQ(Count(Trace(), "MarkDuplicates begins"), 0);
}

TEST_F(RecordImportTest, DuplicatesAreMarkedAfterTheHistory) {
    GivenConfiguration({.duplicateId = "duplicate_of"});
    Create();
    ExpectStoryEnds(
        Joined(Lines{"Commit()"}, NoHistory(),
               Lines{"trace: MarkDuplicates begins", "trace: MarkDuplicates ends successfully",
                     "trace: CleanupRecordMap", "trace: ImportRecord ends",
                     "trace: Import ends successfully."}));
}

TEST_F(RecordImportTest, ADuplicateFailureLeavesTheRecordCommitted) {
    GivenConfiguration({.duplicateId = "duplicate_of"});
    Create({{"source_id", "core-1"}, {"duplicate_of", "core-9"}});
    ExpectErrorText(
        Message(message_id::kRecordNotFound,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-9"}}));
    ExpectStoryEnds({"trace: MarkDuplicates ends with error: " + m_error.ToUtf8(),
                     "trace: CleanupRecordMap", ErrorTrace(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    EXPECT_EQ(Count(Calls(), "Revert()"), 0);
    ExpectCleanRecordMap();
}

class RecordImportThrowsTest : public RecordImportTest,
                               public testing::WithParamInterface<ThrownCase> {};

TEST_P(RecordImportThrowsTest, AppendsToTheErrorTextAndLeavesTheRecordAsItIs) {
    GivenConfiguration();
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    Create();
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds({ErrorTrace(), "trace: Import ends with error: " + m_error.ToUtf8()});
    EXPECT_TRUE(Calls().back().starts_with(GetParam().call.name)) << "nothing else is called";
    EXPECT_EQ(Count(Trace(), "CleanupRecordMap"), 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, RecordImportThrowsTest,
    testing::ValuesIn(EachKindAt({{"ImportEntity"}, {"Validate"}, {"Commit"}})), NameOfCase);

// Calls inside an operation that has a boundary of its own end there, and the record is given up.
class GivenUpByExceptionTest : public RecordImportTest,
                               public testing::WithParamInterface<ThrownCase> {};

TEST_P(GivenUpByExceptionTest, RevertsAndCleansUp) {
    GivenConfiguration();
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    Create();
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds({"trace: SetupFieldValues ends with error: " + m_error.ToUtf8(), "Revert()",
                     "trace: CleanupRecordMap", ErrorTrace(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(WhileFieldsAreWritten, GivenUpByExceptionTest,
                         testing::ValuesIn(EachKindAt({{"GetFieldType"}, {"SetFieldValue", 2}})),
                         NameOfCase);

class RevertThrowsTest : public RecordImportTest, public testing::WithParamInterface<ThrownKind> {};

TEST_P(RevertThrowsTest, AppendsToTheFailureThatWasBeingCleanedUp) {
    GivenConfiguration();
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    m_core.OnCall("Revert").Throws(GetParam());
    Create();
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"title is required").FullMsg()}}) +
                    AppendedTextOf(GetParam(), u"boom"));
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(AllKinds, RevertThrowsTest, testing::ValuesIn(kThrownKinds), NameOfKind);

TEST_F(RecordImportTest, ARefusedFieldDropsTheHistoryBeforeItReverts) {
    GivenConfiguration();
    m_core.OnCall("SetFieldValue").ReturnsText(u"refused");
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Pairs fields = WithHistory();
    std::swap(fields.front(), fields.back());
    Create(fields);
    ExpectNoPendingHistory();
}

TEST_F(RecordImportTest, AnInvalidRecordIsRevertedBeforeItsHistoryIsDropped) {
    GivenConfiguration();
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Create(WithHistory());
    EXPECT_EQ(m_importer->m_historyCount, 1);
    EXPECT_NE(m_importer->m_historyBuffer, nullptr);
}

TEST_F(RecordImportTest, AnExceptionInTheRecordMapCleansUp) {
    GivenConfiguration();
    m_core.OnCall("GetStateFieldDef").Throws(ThrownKind::kText);
    Create();
    ExpectErrorText(u"\nCaught a CString: boom");
    ExpectRecordStory({"trace: ImportRecord begins", "trace: SetupRecordMap begins",
                       "trace: SetupRecordMap ends with error: " + m_error.ToUtf8(),
                       "trace: CleanupRecordMap", ErrorTrace()});
    ExpectCleanRecordMap();
}

}  // namespace
