#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/history_fixture.h"

// History and attachment fields within the fields of a record.

namespace {

class NestedValuesTest : public HistoryTest {
  protected:
    int Write(const Pairs& fields) {
        GivenRecordMap(fields);
        AdEntityPtr bug = GivenOpenBug();
        m_filledByTest = true;
        return m_importer->SetupFieldValues(bug, m_error);
    }
};

TEST_F(NestedValuesTest, AHistoryFieldGoesIntoTheBatchUnderTheRecordsNumber) {
    EXPECT_EQ(Write({{"log", ManyHistoryLines(2)}}), 1);
    ExpectErrorText(u"");
    ExpectStory({"trace: SetupFieldValues begins", "GetFieldValue(dbid)", "dbid.GetValue()",
                 "trace: AddHistory begins", "trace: AddHistory ends",
                 "trace: SetupFieldValues ends"});
    ASSERT_EQ(m_importer->m_historyCount, 2);
    EXPECT_EQ(m_importer->m_historyBuffer[1].recordId, 101);
}

TEST_F(NestedValuesTest, TheNumbersHandleIsReleasedBeforeTheNextField) {
    Write({{"log", ManyHistoryLines(1)}, {"title", "Crash"}});
    const Lines lines = m_core.Log().Lines({CallLog::Kind::kRelease, CallLog::Kind::kCall});
    EXPECT_EQ(lines, (Lines{"GetFieldValue(dbid)", "dbid.GetValue()", "release: value of dbid",
                            "SetFieldValue(title, Crash, 1)", "release: bug 101"}));
}

TEST_F(NestedValuesTest, AnInvalidHistoryEntryEndsThePass) {
    EXPECT_EQ(Write({{"log", "7\tyesterday"}, {"title", "Crash"}}), 0);
    ExpectErrorText(ActionTimeText("yesterday", 1, "7") + u"\n");
    EXPECT_EQ(Trace().back(), "SetupFieldValues ends with error: " + m_error.ToUtf8());
    EXPECT_EQ(Count(Calls(), "SetFieldValue(title, Crash, 1)"), 0);
}

TEST_F(NestedValuesTest, ValidEntriesBesideAnInvalidOneStayInTheBatch) {
    EXPECT_EQ(Write({{"log", "7\tyesterday\n" + ManyHistoryLines(2)}}), 0);
    EXPECT_EQ(m_importer->m_historyCount, 2);
}

TEST_F(NestedValuesTest, AnAttachmentFieldIsAddedToTheRecord) {
    EXPECT_EQ(Write({{"files", AttachmentLines("7", "a.txt", "about a")}}), 1);
    ExpectErrorText(u"");
    ExpectStory({"trace: SetupFieldValues begins",
                 "trace: AddAttachment begins, field name: files, attachments size: 1",
                 "GetFieldValue(files)", "files.GetValueStatus()",
                 "AddAttachment(files, a.txt, about a)", "trace: AddAttachment ends",
                 "trace: SetupFieldValues ends"});
}

TEST_F(NestedValuesTest, ARefusedAttachmentEndsThePass) {
    m_core.OnCall("AddAttachment").ReturnsText(u"no such file");
    EXPECT_EQ(Write({{"files", AttachmentLines("7", "a.txt", "")}, {"title", "Crash"}}), 0);
    ExpectErrorText(Message(message_id::kAttachmentFailed, {{u"_attachmentid_", u"7"}}) + u"\n");
    EXPECT_EQ(Calls().back(), "AddAttachment(files, a.txt, '')");
}

class StaleErrorTest : public NestedValuesTest, public testing::WithParamInterface<std::string> {};

TEST_P(StaleErrorTest, FailsTheFirstFieldThatOnlyReportsByText) {
    m_error = u"stale";
    EXPECT_EQ(Write({{GetParam(), ""}, {"title", "Crash"}}), 0);
    ExpectErrorText(u"stale");
    EXPECT_EQ(Trace().back(), "SetupFieldValues ends with error: stale");
    EXPECT_EQ(Count(Calls(), "SetFieldValue(title, Crash, 1)"), 0);
}

INSTANTIATE_TEST_SUITE_P(Fields, StaleErrorTest, testing::Values("log", "files"),
                         [](const auto& instance) { return instance.param; });

class NestedValuesThrowTest : public NestedValuesTest,
                              public testing::WithParamInterface<ThrownCase> {};

TEST_P(NestedValuesThrowTest, EndsThePassAtItsOwnBoundary) {
    m_core.OnCall(GetParam().call.name, GetParam().call.occurrence).Throws(GetParam().kind);
    EXPECT_EQ(Write({{"log", ManyHistoryLines(1)}, {"title", "Crash"}}), 0);
    ExpectErrorText(AppendedTextOf(GetParam().kind, u"boom"));
    EXPECT_EQ(Trace().back(), "SetupFieldValues ends with error: " + m_error.ToUtf8());
    EXPECT_EQ(Count(Trace(), "AddHistory begins"), 0);
}

INSTANTIATE_TEST_SUITE_P(EveryCall, NestedValuesThrowTest,
                         testing::ValuesIn(EachKindAt({{"GetFieldValue"}, {"GetValue"}})),
                         NameOfCase);

class NestedBoundaryTest : public NestedValuesTest,
                           public testing::WithParamInterface<ThrownKind> {};

TEST_P(NestedBoundaryTest, OfHistoryFailsTheFieldByItsText) {
    m_core.OnCall("GetDbId").Throws(GetParam());
    EXPECT_EQ(Write({{"log", ManyHistoryLines(1)}, {"title", "Crash"}}), 0);
    const Obx_String text = AppendedTextOf(GetParam(), u"boom");
    ExpectErrorText(text);
    ExpectStoryEnds({"trace: AddHistory begins",
                     "trace: AddHistory ends with error: " + text.ToUtf8(),
                     "trace: SetupFieldValues ends with error: " + text.ToUtf8()});
}

TEST_P(NestedBoundaryTest, OfAttachmentsFailsTheFieldByItsText) {
    m_core.OnCall("AddAttachment").Throws(GetParam());
    EXPECT_EQ(Write({{"files", AttachmentLines("7", "a.txt", "")}, {"title", "Crash"}}), 0);
    const Obx_String text = AppendedTextOf(GetParam(), u"boom");
    ExpectErrorText(text);
    ExpectStoryEnds({"AddAttachment(files, a.txt, '')",
                     "trace: AddAttachment ends with error: " + text.ToUtf8(),
                     "trace: SetupFieldValues ends with error: " + text.ToUtf8()});
}

INSTANTIATE_TEST_SUITE_P(AllKinds, NestedBoundaryTest, testing::ValuesIn(kThrownKinds), NameOfKind);

}  // namespace
