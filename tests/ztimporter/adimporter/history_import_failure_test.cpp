#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/history_fixture.h"

// History packets whose record was found and opened, and then something fails.

namespace {

class HistoryImportFailureTest : public HistoryTest {
  protected:
    void SetUp() override {
        m_importer->m_originalID_value = u"";
        GivenConfiguration({.importData = "history"});
        GivenRecords(u"core-1", {u"33"});
    }

    void ImportLines(const std::vector<std::vector<std::string>>& lines) {
        ImportRecords({{{"source_id", "core-1"}, {"history", HistoryLines(lines)}}});
    }
    void ImportOneLine() { ImportLines({{"7", "2024-01-01", "ann", "modify", "NEW", "OPEN"}}); }

    std::string Unbuild() { return "UnbuildResultSet(source_id = core-1)"; }
    std::string Ends(const std::string& operation) {
        return "trace: " + operation + " ends with error: " + m_error.ToUtf8();
    }
};

TEST_F(HistoryImportFailureTest, ValidEntriesAreImportedBeforeAnInvalidOneIsReported) {
    ImportLines({{"7", "2024-01-01", "ann", "modify", "NEW", "OPEN"},
                 {"8"},
                 {"9", "2024-01-02", "bea", "modify", "OPEN", "DONE"}});
    ExpectErrorText(ActionTimeText("", 2, "8") + u"\n");
    ASSERT_EQ(m_core.ImportedHistory().size(), 2U);
    EXPECT_EQ(Text(m_core.ImportedHistory().at(1).userName), "bea");
    ExpectStoryEnds({"ImportHistoryData(2 entries, -1, 0 problems, '', null, null)",
                     "CommitImportHistory()", "trace: ReallyImportHistory ends", Unbuild(),
                     "Revert()", "trace: CleanupRecordMap", Ends("ImportHistory"), Ends("Import")});
    ExpectCleanRecordMap();
}

TEST_F(HistoryImportFailureTest, AFailedRecordEndsThePacket) {
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({{{"source_id", "core-1"}, {"history", "8"}},
                   {{"source_id", "core-2"}, {"history", ManyHistoryLines(1)}}});
    EXPECT_EQ(Calls().back(), "Revert()");
    EXPECT_TRUE(m_core.ImportedHistory().empty());
}

TEST_F(HistoryImportFailureTest, AnEmptyStateIsNamed) {
    ImportLines({{"7", "2024-01-01", "ann", "modify", "", "OPEN"}});
    ExpectErrorText(EmptyColumnText("old_state", 1, "7") + u"\n");
}

TEST_F(HistoryImportFailureTest, ALineOfSevenColumnsIsDroppedSilently) {
    ImportLines({{"7", "2024-01-01", "ann", "modify", "NEW", "OPEN", "comment"},
                 {"8", "2024-01-02", "bea", "modify", "OPEN", "DONE"}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 1U);
    EXPECT_EQ(Text(m_core.ImportedHistory().front().comments), "");
    EXPECT_EQ(Text(m_core.ImportedHistory().front().expiryTime), "");
}

TEST_F(HistoryImportFailureTest, ProblemsOfTheCoreRevertTheRecordButNotTheHistory) {
    m_core.OnCall("ImportHistoryData").ReturnsText(u"entry 1 is bad");
    ImportOneLine();
    ExpectErrorText(u"entry 1 is bad");
    ExpectStoryEnds({"CommitImportHistory()", "trace: ReallyImportHistory error: entry 1 is bad",
                     Unbuild(), "Revert()", "trace: CleanupRecordMap", Ends("ImportHistory"),
                     Ends("Import")});
}

TEST_F(HistoryImportFailureTest, AnInvalidRecordTracesTheAttachmentOperationsText) {
    m_core.OnCall("Validate").Reports(CoreMessage(u"wrong state"));
    ImportOneLine();
    ExpectErrorText(Message(message_id::kValidationFailed,
                            {{u"_coreinfo_", CoreMessage(u"wrong state").FullMsg()}}));
    ExpectStoryEnds({"UpdateImportHistoryExpiredTimestamp(bug, 33)", "Validate()", "Revert()",
                     "trace: CleanupRecordMap", Unbuild(), Ends("ImportAttachment"),
                     Ends("Import")});
    ExpectCleanRecordMap();
}

TEST_F(HistoryImportFailureTest, AFailedCommitTracesTheAttachmentOperationsText) {
    m_core.OnCall("Commit").Reports(CoreMessage(u"disk full"));
    ImportOneLine();
    ExpectErrorText(
        Message(message_id::kCommitFailed, {{u"_coreinfo_", CoreMessage(u"disk full").FullMsg()}}));
    ExpectStoryEnds({"Validate()", "Commit()", "Revert()", "trace: CleanupRecordMap", Unbuild(),
                     Ends("ImportAttachment"), Ends("Import")});
    EXPECT_EQ(Count(Calls(), "RevertImportHistory()"), 0);
    ExpectCleanRecordMap();
}

TEST_F(HistoryImportFailureTest, RecordsBeforeAFailureStayAsTheyAre) {
    GivenRecords(u"core-2", {u"34"});
    m_core.OnCall("Validate", 2).Reports(CoreMessage(u"wrong state"));
    ImportRecords({{{"source_id", "core-1"}, {"history", ManyHistoryLines(1)}},
                   {{"source_id", "core-2"}, {"history", ManyHistoryLines(1)}}});
    EXPECT_EQ(Count(Calls(), "Commit()"), 1);
    EXPECT_EQ(Count(Calls(), "Revert()"), 1);
    EXPECT_EQ(Calls().back(), "UnbuildResultSet(source_id = core-2)");
}

TEST_F(HistoryImportFailureTest, EntriesBeforeAnExceptionAreImportedAndTheRecordIsReverted) {
    m_core.OnCall("GetDbId", 3).Throws(ThrownKind::kText);
    ImportRecords({{{"source_id", "core-1"}, {"history", ManyHistoryLines(4)}}});
    ExpectErrorText(u"\nCaught a CString: boom");
    ASSERT_EQ(m_core.ImportedHistory().size(), 2U);
    EXPECT_EQ(Text(m_core.ImportedHistory().at(1).userName), "user 2");
    ExpectStoryEnds({"trace: AddHistory ends with error: " + m_error.ToUtf8(),
                     "trace: ReallyImportHistory begins",
                     "ImportHistoryData(2 entries, -1, 0 problems, '', null, null)",
                     "CommitImportHistory()", "trace: ReallyImportHistory ends", Unbuild(),
                     "Revert()", "trace: CleanupRecordMap", Ends("ImportHistory"), Ends("Import")});
}

class HistoryRevertThrowsTest : public HistoryImportFailureTest,
                                public testing::WithParamInterface<std::string> {};

TEST_P(HistoryRevertThrowsTest, AppendsToTheFailureThatWasBeingCleanedUp) {
    m_core.OnCall("Revert").Throws(ThrownKind::kText);
    Obx_String cause = u"bad entry";
    if (GetParam() == "ImportHistoryData") {
        m_core.OnCall(GetParam()).ReturnsText(cause);
    } else {
        m_core.OnCall(GetParam()).Reports(CoreMessage(u"bad"));
        cause = Message(
            GetParam() == "Validate" ? message_id::kValidationFailed : message_id::kCommitFailed,
            {{u"_coreinfo_", CoreMessage(u"bad").FullMsg()}});
    }
    ImportOneLine();
    ExpectErrorText(cause + u"\nCaught a CString: boom");
    ExpectStoryEnds({"Revert()", Ends("ImportHistory"), Ends("Import")});
    // Only entries that were refused give the result set back first.
    EXPECT_EQ(Count(Calls(), Unbuild()), GetParam() == "ImportHistoryData" ? 1 : 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(Causes, HistoryRevertThrowsTest,
                         testing::Values("ImportHistoryData", "Validate", "Commit"),
                         [](const auto& instance) { return instance.param; });

TEST_F(HistoryImportFailureTest, ANumberThatIsNoNumberCountsAsZero) {
    m_core.SetFieldValues(u"dbid", {u"none"});
    ImportOneLine();
    EXPECT_EQ(m_core.ImportedHistory().at(0).recordId, 0);
    EXPECT_EQ(Count(Calls(), "UpdateImportHistoryExpiredTimestamp(bug, 0)"), 1);
}

class HistoryImportThrowsTest : public HistoryImportFailureTest,
                                public testing::WithParamInterface<ThrownCase> {};

TEST_P(HistoryImportThrowsTest, AppendsToTheErrorTextAndNeitherRevertsNorCleansUp) {
    const CoreCall& call = GetParam().call;
    m_core.OnCall(call.name, call.occurrence).Throws(GetParam().kind);
    ImportOneLine();
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    ExpectStoryEnds({Ends("ImportHistory"), Ends("Import")});
    EXPECT_NE(Calls().back().find(call.name), std::string::npos) << "nothing else is called";
    EXPECT_EQ(Count(Trace(), "CleanupRecordMap"), 0);
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(EveryCall, HistoryImportThrowsTest,
                         testing::ValuesIn(EachKindAt({{"GetRowCount"},
                                                       {"GetColumn"},
                                                       {"ImportEntity"},
                                                       {"GetFieldValue"},
                                                       {"GetValue"},
                                                       {"UpdateImportHistoryExpiredTimestamp"},
                                                       {"Validate"},
                                                       {"Commit"},
                                                       {"UnbuildResultSet"}})),
                         NameOfCase);

class HistoryFlushInsideThrowsTest : public HistoryImportFailureTest,
                                     public testing::WithParamInterface<ThrownCase> {};

TEST_P(HistoryFlushInsideThrowsTest, RevertsAndCleansUp) {
    m_core.OnCall(GetParam().call.name).Throws(GetParam().kind);
    ImportOneLine();
    EXPECT_FALSE(m_error.IsEmpty());
    ExpectStoryEnds(
        {Unbuild(), "Revert()", "trace: CleanupRecordMap", Ends("ImportHistory"), Ends("Import")});
    const bool isMessage = GetParam().kind == ThrownKind::kMessage;
    EXPECT_EQ(Count(Calls(), "RevertImportHistory()"), isMessage ? 1 : 0);
    ExpectNoPendingHistory();
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, HistoryFlushInsideThrowsTest,
    testing::ValuesIn(EachKindAt({{"ImportHistoryData"}, {"CommitImportHistory"}})), NameOfCase);

class HistoryTypeAskedTest : public HistoryImportFailureTest,
                             public testing::WithParamInterface<ThrownKind> {};

TEST_P(HistoryTypeAskedTest, ForItsKindEndsByTheException) {
    m_core.OnCall("GetType", 2).Throws(GetParam());
    ImportOneLine();
    ExpectErrorText(AppendedTextOf(GetParam(), u"boom"));
    ExpectNoCalls();
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(AllKinds, HistoryTypeAskedTest, testing::ValuesIn(kThrownKinds),
                         NameOfKind);

class HistorySearchThrowsTest : public HistoryImportFailureTest,
                                public testing::WithParamInterface<ThrownKind> {};

TEST_P(HistorySearchThrowsTest, IsHiddenByTheNotFoundMessage) {
    m_core.OnCall("Execute").Throws(GetParam());
    ImportOneLine();
    ExpectErrorText(
        Message(message_id::kRecordNotFound,
                {{u"_datatype_", u"bug"}, {u"_field_", u"source_id"}, {u"_value_", u"core-1"}}));
    ExpectCleanRecordMap();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, HistorySearchThrowsTest, testing::ValuesIn(kThrownKinds),
                         NameOfKind);

}  // namespace
