#include <gtest/gtest.h>

#include <utility>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/thrown_cases.h"

namespace {

// Update of records that an earlier import created: UpdateRecord.
class RecordUpdateTest : public ImporterTest {
  protected:
    void SetUp() override { GivenConfiguration({.updateRecord = true}); }

    // Updates with one record of a packet.
    void Update(const Pairs& fields = {{"source_id", "core-1"}, {"title", "Crash"}}) {
        ImportRecords({fields});
    }

    static Lines Begin() {
        return {"trace: UpdateRecord begins: m_originalID=source_id, m_originalID_value=",
                "trace: SetupRecordMap begins", "trace: SetupRecordMap ends"};
    }
    static Lines Found() {
        return Joined(Lines{"trace: GetResultSetWhere begins: filed=source_id, value=core-1"},
                      Search("source_id", "core-1"),
                      Lines{"trace: GetResultSetWhere ends successfully", "GetRowCount()"});
    }
    static Lines NotFound() {
        return Joined(Lines{"trace: GetResultSetWhere begins: filed=source_id, value=core-1"},
                      Search("source_id", "core-1"), Lines{"trace: GetResultSetWhere ends"});
    }
    static Lines Written() {
        return {"GetColumn(1, 0)",
                "ImportEntity(bug, '', 33)",
                "trace: SetupFieldValues begins",
                "SetFieldValue(source_id, core-1, 1)",
                "SetFieldValue(title, Crash, 1)",
                "trace: SetupFieldValues ends"};
    }
    static Lines NoHistory() {
        return {"trace: ReallyImportHistory begins",
                "trace: ReallyImportHistory ends with no history imported"};
    }
    static std::string Unbuild() { return "UnbuildResultSet(source_id = core-1)"; }
    static std::string CleanUp() { return "trace: CleanupRecordMap"; }
    std::string ErrorTrace() { return "trace: UpdateRecord ends with error: " + m_error.ToUtf8(); }

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

    static Obx_String NotFoundText(int id, const Obx_String& value = u"core-1") {
        return Message(id,
                       {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", value}});
    }

    static Pairs HistoryAndThenTitle() {
        return {{"source_id", "core-1"},
                {"log", HistoryLines({{"7", "2024-01-01 10:00:00", "ann", "submit", "-", "NEW"}})},
                {"title", "Crash"}};
    }
};

TEST_F(RecordUpdateTest, FindsWritesValidatesCommitsAndGivesTheResultSetBack) {
    GivenRecords(u"core-1", {u"33"});
    Update();
    ExpectErrorText(u"");
    ExpectRecordStory(Joined(Begin(), Found(), Written(), Lines{"Validate()", "Commit()"},
                             NoHistory(),
                             Lines{Unbuild(), CleanUp(), "trace: UpdateRecord ends successfully"}));
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, RecordAndResultSetAreReleasedBeforeTheEndTrace) {
    GivenRecords(u"core-1", {u"33"});
    Update();
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
    EXPECT_EQ(Lines(lines.end() - 5, lines.end()),
              (Lines{"release: result set of source_id = core-1", "trace: CleanupRecordMap",
                     "release: bug 33", "trace: UpdateRecord ends successfully",
                     "trace: Import ends successfully."}));
}

TEST_F(RecordUpdateTest, TheStateIsPassedAsForANewRecord) {
    GivenConfiguration({.updateRecord = true, .importState = true});
    GivenRecords(u"core-1", {u"33"});
    Update({{"source_id", "core-1"}, {"state", "OPEN"}});
    EXPECT_EQ(Count(Calls(), "ImportEntity(bug, OPEN, 33)"), 1);
}

TEST_F(RecordUpdateTest, ReturnsWhetherTheRecordWasUpdated) {
    GivenRecords(u"core-1", {u"33"});
    GivenCurrentRecord({{"source_id", "core-1"}});
    EXPECT_EQ(m_importer->UpdateRecord(m_error), 1);
    GivenCurrentRecord({{"source_id", "core-2"}});
    EXPECT_EQ(m_importer->UpdateRecord(m_error), 0);
}

TEST_F(RecordUpdateTest, AnEarlierErrorMakesItGiveUpAfterTheRecordMap) {
    GivenCurrentRecord({{"source_id", "core-1"}});
    m_error = u"earlier";
    EXPECT_EQ(m_importer->UpdateRecord(m_error), 0);
    ExpectErrorText(u"earlier");
    ExpectStory(Joined(Begin(), Lines{CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, ARecordThatIsNotFoundIsAnErrorWithoutUpdateInsert) {
    Update();
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound));
    ExpectRecordStory(Joined(Begin(), NotFound(), Lines{CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, AnEmptyResultSetIsAnErrorWithoutUpdateInsert) {
    GivenRowCount(u"core-1", 0);
    Update();
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound));
    ExpectRecordStory(Joined(Begin(), Found(), Lines{Unbuild(), CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

class SeveralRecordsTest : public RecordUpdateTest, public testing::WithParamInterface<long> {};

TEST_P(SeveralRecordsTest, AreAnErrorAndNothingIsChanged) {
    GivenRowCount(u"core-1", GetParam());
    Update();
    ExpectErrorText(NotFoundText(message_id::kRecordAmbiguous));
    ExpectRecordStory(Joined(Begin(), Found(), Lines{Unbuild(), CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(Counts, SeveralRecordsTest, testing::Values(2L, 3L, 100L));

class UncountedRecordsTest : public RecordUpdateTest, public testing::WithParamInterface<long> {};

TEST_P(UncountedRecordsTest, AreSkippedAsASuccess) {
    GivenRowCount(u"core-1", GetParam());
    Update();
    ExpectErrorText(u"");
    ExpectRecordStory(
        Joined(Begin(), Found(), Lines{CleanUp(), "trace: UpdateRecord ends successfully"}));
}

TEST_P(UncountedRecordsTest, AreSkippedAlsoWithUpdateInsert) {
    GivenConfiguration({.updateRecord = true, .updateInsert = true});
    GivenRowCount(u"core-1", GetParam());
    Update();
    ExpectErrorText(u"");
    ExpectCalls(Joined(Search("source_id", "core-1"), Lines{"GetRowCount()"}));
}

INSTANTIATE_TEST_SUITE_P(Counts, UncountedRecordsTest, testing::Values(-1L, -2L, -100L));

TEST_F(RecordUpdateTest, ASkippedRecordReleasesItsResultSetBeforeTheEndTrace) {
    GivenRowCount(u"core-1", -1);
    Update();
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kTrace});
    EXPECT_EQ(Lines(lines.end() - 4, lines.end()),
              (Lines{"release: result set of source_id = core-1", CleanUp(),
                     "trace: UpdateRecord ends successfully", "trace: Import ends successfully."}));
}

TEST_F(RecordUpdateTest, ARefusedFieldGivesTheResultSetBackBeforeItReverts) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"too long");
    Update();
    ExpectErrorText(u"too long");
    ExpectStoryEnds({"SetFieldValue(title, Crash, 1)",
                     "trace: SetupFieldValues ends with error: too long", Unbuild(), "Revert()",
                     CleanUp(), ErrorTrace(), "trace: Import ends with error: too long"});
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, AnInvalidRecordGivesTheCoresTextAlone) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    Update();
    ExpectErrorText(CoreMessage(u"title is required").FullMsg());
    ExpectRecordStory(Joined(Begin(), Found(), Written(),
                             Lines{"Validate()", "Revert()", Unbuild(), CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, AFailedCommitGivesTheCoresTextAlone) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    Update();
    ExpectErrorText(CoreMessage(u"disk full").FullMsg());
    ExpectRecordStory(
        Joined(Begin(), Found(), Written(),
               Lines{"Validate()", "Commit()", "Revert()", Unbuild(), CleanUp(), ErrorTrace()}));
    ExpectCleanRecordMap();
}

class GivenUpUpdateTest : public RecordUpdateTest,
                          public testing::WithParamInterface<std::string> {};

TEST_P(GivenUpUpdateTest, DropsItsPendingHistory) {
    GivenRecords(u"core-1", {u"33"});
    if (GetParam() == "SetFieldValue") {
        m_core.OnCall(GetParam(), 2).ReturnsText(u"refused");
    } else {
        m_core.OnCall(GetParam()).Reports(CoreMessage(u"refused"));
    }
    Update(HistoryAndThenTitle());
    ExpectNoPendingHistory();
    EXPECT_TRUE(m_core.ImportedHistory().empty());
}

INSTANTIATE_TEST_SUITE_P(BeforeOrAtCommit, GivenUpUpdateTest,
                         testing::Values("SetFieldValue", "Validate", "Commit"),
                         [](const auto& instance) { return instance.param; });

TEST_F(RecordUpdateTest, ARefusedFieldRevertsBeforeTheHistoryIsDropped) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"refused");
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Update(HistoryAndThenTitle());
    EXPECT_EQ(m_importer->m_historyCount, 1);
}

TEST_F(RecordUpdateTest, AnInvalidRecordRevertsBeforeTheHistoryIsDropped) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Update(HistoryAndThenTitle());
    ExpectErrorText(CoreMessage(u"title is required").FullMsg() + u"\nCaught a CString: boom");
    EXPECT_EQ(m_importer->m_historyCount, 1);
    EXPECT_NE(m_importer->m_historyBuffer, nullptr);
    EXPECT_EQ(Count(Calls(), Unbuild()), 0);
    ExpectRecordMapLeft(u"core-1");
}

TEST_F(RecordUpdateTest, AnInvalidRecordDropsTheHistoryBeforeTheResultSetGoesBack) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("Validate").Reports(CoreMessage(u"title is required"));
    m_core.OnCall("UnbuildResultSet").Throws(ThrownKind::kText);
    Update(HistoryAndThenTitle());
    ExpectErrorText(CoreMessage(u"title is required").FullMsg() + u"\nCaught a CString: boom");
    ExpectNoPendingHistory();
}

TEST_F(RecordUpdateTest, PendingHistoryIsImportedAfterTheCommit) {
    GivenRecords(u"core-1", {u"33"});
    Update(HistoryAndThenTitle());
    ExpectErrorText(u"");
    ExpectStoryEnds({"Commit()", "trace: ReallyImportHistory begins",
                     "ImportHistoryData(1 entries, -1, 0 problems, '', null, null)",
                     "CommitImportHistory()", "trace: ReallyImportHistory ends", Unbuild(),
                     CleanUp(), "trace: UpdateRecord ends successfully",
                     "trace: Import ends successfully."});
    EXPECT_EQ(m_core.ImportedHistory().at(0).recordId, 33);
}

TEST_F(RecordUpdateTest, AHistoryFailureLeavesTheRecordCommitted) {
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("ImportHistoryData").ReturnsText(u"bad entry");
    Update(HistoryAndThenTitle());
    ExpectErrorText(u"bad entry");
    ExpectStoryEnds({"CommitImportHistory()", "trace: ReallyImportHistory error: bad entry",
                     Unbuild(), CleanUp(), ErrorTrace(),
                     "trace: Import ends with error: bad entry"});
    ExpectCleanRecordMap();
}

TEST_F(RecordUpdateTest, DuplicatesAreMarkedAfterTheHistory) {
    GivenConfiguration({.duplicateId = "duplicate_of", .updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    Update();
    ExpectStoryEnds(
        Joined(Lines{"Commit()"}, NoHistory(),
               Lines{"trace: MarkDuplicates begins", "trace: MarkDuplicates ends successfully",
                     Unbuild(), CleanUp(), "trace: UpdateRecord ends successfully",
                     "trace: Import ends successfully."}));
}

TEST_F(RecordUpdateTest, ADuplicateFailureLeavesTheRecordCommitted) {
    GivenConfiguration({.duplicateId = "duplicate_of", .updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    Update({{"source_id", "core-1"}, {"duplicate_of", "core-9"}});
    ExpectErrorText(NotFoundText(message_id::kRecordNotFound, u"core-9"));
    ExpectStoryEnds({"trace: MarkDuplicates ends with error: " + m_error.ToUtf8(), Unbuild(),
                     CleanUp(), ErrorTrace(),
                     "trace: Import ends with error: " + m_error.ToUtf8()});
    EXPECT_EQ(Count(Calls(), "Revert()"), 0);
    ExpectCleanRecordMap();
}

}  // namespace
