#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/history_fixture.h"

// AddHistory and IsHistoryFieldEmpty: what of a record's history gets into the batch.

namespace {

class HistoryBatchTest : public HistoryTest {};

TEST_F(HistoryBatchTest, FillsEveryPartOfAnEntry) {
    Add({{{"dbid", "7"},
          {"action_timestamp", "2024-01-31T10:20:30+02:00"},
          {"expired_timestamp", "2024-02-01 00:00"},
          {"user_name", "ann"},
          {"action_name", "resolve"},
          {"old_state", "OPEN"},
          {"new_state", "DONE"},
          {"comments", "at last"}}},
        4711);
    ExpectErrorText(u"");
    ASSERT_EQ(m_importer->m_historyCount, 1);
    const AdHistory& entry = m_importer->m_historyBuffer[0];
    EXPECT_EQ(entry.reserved, 0);
    EXPECT_EQ(entry.recordId, 4711);
    EXPECT_EQ(Text(entry.sourceIdField), "source_id");
    EXPECT_EQ(entry.recordTypeId, 1001);
    EXPECT_EQ(Text(entry.recordTypeName), "bug");
    EXPECT_EQ(Text(entry.actionTime), "2024-01-31 08:20:30");
    EXPECT_EQ(Text(entry.expiryTime), "2024-02-01 00:00:00");
    EXPECT_EQ(Text(entry.userName), "ann");
    EXPECT_EQ(Text(entry.actionName), "resolve");
    EXPECT_EQ(Text(entry.oldState), "OPEN");
    EXPECT_EQ(Text(entry.newState), "DONE");
    EXPECT_EQ(Text(entry.comments), "at last");
}

TEST_F(HistoryBatchTest, ExpiryAndCommentsMayBeMissing) {
    Add({ValidEntry("7")});
    ExpectErrorText(u"");
    ASSERT_EQ(m_importer->m_historyCount, 1);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].expiryTime), "");
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].comments), "");
}

TEST_F(HistoryBatchTest, TimesOfAllFormsComeToOne) {
    for (const char* const time :
         {"2024-01-31 08:20:00", "2024-01-31T08:20:00", "2024-01-31 08:20", "2024-01-31T08:20:00Z",
          "2024-01-31 08:20Z  ", " 2024-01-31 08:20 ", "2024-01-31 10:20+02"}) {
        Add({With(ValidEntry("7"), "action_timestamp", time)});
        const AdHistory& last = m_importer->m_historyBuffer[m_importer->m_historyCount - 1];
        EXPECT_EQ(Text(last.actionTime), "2024-01-31 08:20:00") << time;
    }
}

TEST_F(HistoryBatchTest, TracesItsBeginningAndEnd) {
    Add({ValidEntry("7")});
    ExpectStory({"trace: AddHistory begins", "trace: AddHistory ends"});
}

TEST_F(HistoryBatchTest, NoEntriesMakeAnEmptyBatch) {
    Add({});
    EXPECT_NE(m_importer->m_historyBuffer, nullptr);
    EXPECT_EQ(m_importer->m_historyCount, 0);
    ExpectTrace({"AddHistory begins", "AddHistory ends"});
}

TEST_F(HistoryBatchTest, LaterCallsAppendToTheBatch) {
    Add({ValidEntry("7")}, 101);
    Add({ValidEntry("8"), ValidEntry("9")}, 102);
    ASSERT_EQ(m_importer->m_historyCount, 3);
    EXPECT_EQ(m_importer->m_historyBuffer[0].recordId, 101);
    EXPECT_EQ(m_importer->m_historyBuffer[2].recordId, 102);
}

TEST_F(HistoryBatchTest, AnInvalidTimeIsReportedWithItsLineAndTheEntrySkipped) {
    Add({ValidEntry("7"), With(ValidEntry("8"), "action_timestamp", "yesterday"), ValidEntry("9")});
    ExpectErrorText(ActionTimeText("yesterday", 2, "8") + u"\n");
    ExpectTrace({"AddHistory begins", "AddHistory error: " + m_error.ToUtf8(), "AddHistory ends"});
    EXPECT_EQ(m_importer->m_historyCount, 2);
}

TEST_F(HistoryBatchTest, AMissingTimeIsInvalid) {
    Add({{{"dbid", "7"}}});
    ExpectErrorText(ActionTimeText("", 1, "7") + u"\n");
    EXPECT_EQ(m_importer->m_historyCount, 0);
}

TEST_F(HistoryBatchTest, AnEntryWithoutIdIsReportedWithAnEmptyOne) {
    Add({{}});
    ExpectErrorText(ActionTimeText("", 1, "") + u"\n");
}

TEST_F(HistoryBatchTest, InvalidTimesAppendToTheErrorText) {
    m_error = u"earlier";
    Add({With(ValidEntry("7"), "action_timestamp", "a"),
         With(ValidEntry("8"), "action_timestamp", "b")});
    ExpectErrorText(u"earlier" + ActionTimeText("a", 1, "7") + u"\n" + ActionTimeText("b", 2, "8") +
                    u"\n");
}

TEST_F(HistoryBatchTest, AnInvalidExpiryReplacesTheErrorTextWithoutALineFeed) {
    Add({With(ValidEntry("7"), "action_timestamp", "a"), ValidEntry("8"),
         With(ValidEntry("9"), "expired_timestamp", "never")});
    ExpectErrorText(ExpiryText("never", 3, "9"));
    EXPECT_EQ(Trace().at(2), "AddHistory error: " + m_error.ToUtf8());
    EXPECT_EQ(m_importer->m_historyCount, 1);
}

TEST_F(HistoryBatchTest, AnInvalidTimeAfterAnInvalidExpiryAppends) {
    Add({With(ValidEntry("7"), "expired_timestamp", "never"),
         With(ValidEntry("8"), "action_timestamp", "a")});
    ExpectErrorText(ExpiryText("never", 1, "7") + ActionTimeText("a", 2, "8") + u"\n");
}

TEST_F(HistoryBatchTest, TheTimeIsCheckedBeforeTheExpiry) {
    Add({With(With(ValidEntry("7"), "action_timestamp", "a"), "expired_timestamp", "b")});
    ExpectErrorText(ActionTimeText("a", 1, "7") + u"\n");
}

class RequiredColumnTest : public HistoryBatchTest,
                           public testing::WithParamInterface<std::string> {};

TEST_P(RequiredColumnTest, IsReportedWhenItIsEmptyAndTheEntrySkipped) {
    Add({With(ValidEntry("7"), GetParam(), ""), ValidEntry("8")});
    ExpectErrorText(EmptyColumnText(GetParam(), 1, "7") + u"\n");
    ExpectTrace({"AddHistory begins", "AddHistory error: " + m_error.ToUtf8(), "AddHistory ends"});
    ASSERT_EQ(m_importer->m_historyCount, 1);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].userName), "ann 8");
}

TEST_P(RequiredColumnTest, MayHoldBlanks) {
    Add({With(ValidEntry("7"), GetParam(), "  ")});
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_historyCount, 1);
}

INSTANTIATE_TEST_SUITE_P(Columns, RequiredColumnTest,
                         testing::Values("user_name", "action_name", "old_state", "new_state"),
                         [](const auto& instance) { return instance.param; });

TEST_F(HistoryBatchTest, OnlyTheFirstEmptyColumnIsReported) {
    Add({{{"dbid", "7"}, {"action_timestamp", "2024-01-01"}}});
    ExpectErrorText(EmptyColumnText("user_name", 1, "7") + u"\n");
    Add({With(With(ValidEntry("8"), "new_state", ""), "old_state", "")});
    ExpectErrorText(EmptyColumnText("user_name", 1, "7") + u"\n" +
                    EmptyColumnText("old_state", 1, "8") + u"\n");
}

TEST_F(HistoryBatchTest, RequiredColumnsAreCheckedInTheirOrder) {
    Entry entry = {{"dbid", "7"}, {"action_timestamp", "2024-01-01"}};
    Obx_String expected;
    for (const char* column : {"user_name", "action_name", "old_state", "new_state"}) {
        Add({entry});
        expected += EmptyColumnText(column, 1, "7") + u"\n";
        ExpectErrorText(expected);
        entry[column] = "given";
    }
    Add({entry});
    ExpectErrorText(expected);
    EXPECT_EQ(m_importer->m_historyCount, 1);
}

TEST_F(HistoryBatchTest, AnExpiryOfBlanksIsInvalid) {
    Add({With(ValidEntry("7"), "expired_timestamp", " ")});
    ExpectErrorText(ExpiryText(" ", 1, "7"));
    EXPECT_EQ(m_importer->m_historyCount, 0);
}

TEST_F(HistoryBatchTest, SkippedEntriesCountAsLines) {
    Add({With(ValidEntry("7"), "user_name", ""), With(ValidEntry("8"), "action_timestamp", "x"),
         With(ValidEntry("9"), "new_state", "")});
    ExpectErrorText(EmptyColumnText("user_name", 1, "7") + u"\n" + ActionTimeText("x", 2, "8") +
                    u"\n" + EmptyColumnText("new_state", 3, "9") + u"\n");
}

TEST_F(HistoryBatchTest, ASkippedEntryLeavesNothingBehindInTheNextOne) {
    Add({With(With(ValidEntry("7"), "expired_timestamp", "2024-02-01"), "new_state", ""),
         ValidEntry("8")});
    ASSERT_EQ(m_importer->m_historyCount, 1);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].userName), "ann 8");
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].expiryTime), "");
}

TEST_F(HistoryBatchTest, AnEmptyColumnIsRecognisedByItsLengthAlone) {
    EXPECT_EQ(m_importer->IsHistoryFieldEmpty(u"7", u"user_name", u" ", 3, m_error), 0);
    ExpectErrorText(u"");
    m_error = u"earlier";
    EXPECT_EQ(m_importer->IsHistoryFieldEmpty(u"7", u"user_name", u"", 3, m_error), 1);
    ExpectErrorText(u"earlier" + EmptyColumnText("user_name", 3, "7") + u"\n");
    ExpectNoCalls();
    ExpectTrace({});
}

class HistoryBatchThrowsTest : public HistoryBatchTest,
                               public testing::WithParamInterface<ThrownCase> {};

TEST_P(HistoryBatchThrowsTest, AppendsToTheErrorTextAndKeepsTheEntriesBefore) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    m_error = u"earlier";
    Add({ValidEntry("7"), ValidEntry("8")});
    const Obx_String text = u"earlier" + AppendedTextOf(GetParam().kind, u"boom");
    ExpectErrorText(text);
    ExpectTrace({"AddHistory begins", "AddHistory ends with error: " + text.ToUtf8()});
    EXPECT_EQ(m_importer->m_historyCount, GetParam().call.occurrence - 1);
}

INSTANTIATE_TEST_SUITE_P(
    EveryCall, HistoryBatchThrowsTest,
    testing::ValuesIn(EachKindAt({{"GetDbId", 1}, {"GetDbId", 2}, {"GetName", 1}, {"GetName", 2}})),
    NameOfCase);

}  // namespace
