#include <gtest/gtest.h>

#include "tests/ztimporter/history_fixture.h"

// ReallyImportHistory: how the batch is handed to the core.

namespace {

class HistoryFlushTest : public HistoryTest {
  protected:
    void GivenBatch(int entries = 1) {
        for (int number = 1; number <= entries; ++number) {
            Add({ValidEntry(std::to_string(number))});
        }
        m_core.ForgetCalls();
    }

    static std::string ImportCall(int entries = 1) {
        return "ImportHistoryData(" + std::to_string(entries) +
               " entries, -1, 0 problems, '', null, null)";
    }
};

TEST_F(HistoryFlushTest, ImportsCommitsAndEmptiesTheBatch) {
    GivenBatch(3);
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 1);
    ExpectErrorText(u"");
    ExpectStory({"trace: ReallyImportHistory begins", ImportCall(3), "CommitImportHistory()",
                 "trace: ReallyImportHistory ends"});
    ExpectNoPendingHistory();
    EXPECT_EQ(Text(m_core.ImportedHistory().at(2).userName), "ann 3");
}

TEST_F(HistoryFlushTest, WithoutABatchNothingIsCalled) {
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 1);
    ExpectErrorText(u"earlier");
    ExpectStory({"trace: ReallyImportHistory begins",
                 "trace: ReallyImportHistory ends with no history imported"});
}

TEST_F(HistoryFlushTest, WithAnEmptyBatchNothingIsCalled) {
    Add({});
    m_core.ForgetCalls();
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 1);
    ExpectStory({"trace: ReallyImportHistory begins",
                 "trace: ReallyImportHistory ends with no history imported"});
}

TEST_F(HistoryFlushTest, ProblemsReplaceTheErrorTextAfterTheCommit) {
    GivenBatch();
    m_core.OnCall("ImportHistoryData").ReturnsText(u"entry 1 is bad");
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 0);
    ExpectErrorText(u"entry 1 is bad");
    ExpectStory({"trace: ReallyImportHistory begins", ImportCall(), "CommitImportHistory()",
                 "trace: ReallyImportHistory error: entry 1 is bad"});
    ExpectNoPendingHistory();
}

TEST_F(HistoryFlushTest, SuccessLeavesAnEarlierErrorText) {
    GivenBatch();
    m_error = u"earlier";
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 1);
    ExpectErrorText(u"earlier");
}

TEST_F(HistoryFlushTest, TheNextBatchBeginsEmpty) {
    GivenBatch(2);
    m_importer->ReallyImportHistory(m_error);
    GivenBatch(1);
    m_importer->ReallyImportHistory(m_error);
    ExpectCalls({ImportCall(1), "CommitImportHistory()"});
}

class FailingRevertTest : public HistoryFlushTest,
                          public testing::WithParamInterface<ThrownKind> {};

TEST_P(FailingRevertTest, IsReportedByTheRecordsOperation) {
    GivenConfiguration();
    m_core.OnCall("ImportHistoryData").Throws(ThrownKind::kMessage);
    m_core.OnCall("RevertImportHistory").Throws(GetParam(), u"cannot revert");
    ImportRecords({{{"log", ManyHistoryLines(1)}}});
    ExpectErrorText(AppendedTextOf(GetParam(), u"cannot revert"));
    ExpectNoPendingHistory();
}

INSTANTIATE_TEST_SUITE_P(AllKinds, FailingRevertTest, testing::ValuesIn(kThrownKinds), NameOfKind);

class HistoryFlushThrowsTest : public HistoryFlushTest,
                               public testing::WithParamInterface<ThrownCase> {
  protected:
    // Throws at the call; the flush fails with this error text and these lines after the call.
    void ExpectFailure(const Obx_String& text, const Lines& after) {
        GivenBatch();
        m_core.OnCall(GetParam().call.name).Throws(GetParam().kind);
        m_error = u"earlier";
        EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 0);
        ExpectErrorText(text);
        Lines calls = {"trace: ReallyImportHistory begins", ImportCall()};
        if (GetParam().call.name == "CommitImportHistory") {
            calls.push_back("CommitImportHistory()");
        }
        ExpectStory(Joined(calls, after));
        ExpectNoPendingHistory();
    }
};

TEST_P(HistoryFlushThrowsTest, EmptiesTheBatchAndSetsItsOwnText) {
    switch (GetParam().kind) {
        case ThrownKind::kMessage: {
            const Obx_String text = CoreMessage(u"boom").FullMsg();
            ExpectFailure(text, {"RevertImportHistory()",
                                 "trace: ReallyImportHistory error: " + text.ToUtf8()});
            break;
        }
        case ThrownKind::kFoundation:
            ExpectFailure(
                u"Caught a CException: \nboom",
                {"trace: ReallyImportHistory ends with error: Caught a CException: \nboom"});
            break;
        case ThrownKind::kText:
            ExpectFailure(u"Caught a CString: ",
                          {"trace: ReallyImportHistory ends with error: Caught a CString: "});
            break;
        case ThrownKind::kUnknown:
            ExpectFailure(u"earlier\nCaught an unknown exception",
                          {"trace: ReallyImportHistory ends with error: earlier\n"
                           "Caught an unknown exception"});
            break;
    }
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, HistoryFlushThrowsTest,
    testing::ValuesIn(EachKindAt({{"ImportHistoryData"}, {"CommitImportHistory"}})), NameOfCase);

}  // namespace
