#include <gtest/gtest.h>

#include <utility>

#include "tests/ztimporter/history_fixture.h"

// The batch holds 501 entries; whatever a packet brings, nothing is written past them and the core
// never gets an entry that was not filled.

namespace {

class HistoryMemoryTest : public HistoryTest {
  protected:
    HistoryMemoryTest() { m_importer->m_originalID_value = u""; }

    void ExpectImportedUsers(int count, long recordId = 101) {
        ASSERT_EQ(m_core.ImportedHistory().size(), static_cast<std::size_t>(count));
        for (int number = 1; number <= count; ++number) {
            const AdHistory& entry = m_core.ImportedHistory()[static_cast<std::size_t>(number - 1)];
            ASSERT_EQ(Text(entry.userName), "user " + std::to_string(number));
            ASSERT_EQ(Text(entry.newState), "OPEN");
            ASSERT_EQ(entry.recordId, recordId);
        }
    }
};

class ManyEntriesTest : public HistoryMemoryTest,
                        public testing::WithParamInterface<std::pair<int, int>> {};

TEST_P(ManyEntriesTest, AreImportedUpToTheRoomOfTheBatch) {
    GivenConfiguration();
    ImportRecords({{{"title", "Crash"}, {"log", ManyHistoryLines(GetParam().first)}}});
    ExpectErrorText(u"");
    ExpectImportedUsers(GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(Counts, ManyEntriesTest,
                         testing::Values(std::pair{499, 499}, std::pair{500, 500},
                                         std::pair{501, 501}, std::pair{502, 501},
                                         std::pair{1200, 501}));

TEST_F(HistoryMemoryTest, TheEndIsTracedAtTheLimitToo) {
    for (int call = 0; call < 2; ++call) {
        m_core.ForgetCalls();
        Add(std::vector<Entry>(502, ValidEntry("7")));
        ExpectErrorText(u"");
        ExpectTrace({"AddHistory begins", "AddHistory ends"});
        EXPECT_EQ(m_importer->m_historyCount, 501);
    }
}

TEST_F(HistoryMemoryTest, EntriesAfterTheLastOneAreNotEvenChecked) {
    GivenConfiguration();
    ImportRecords({{{"title", "Crash"}, {"log", ManyHistoryLines(501) + "502\tno time\n"}}});
    ExpectErrorText(u"");
    ExpectImportedUsers(501);
}

TEST_F(HistoryMemoryTest, InvalidEntriesTakeNoRoom) {
    GivenConfiguration({.importData = "history"});
    GivenRecords(u"core-1", {u"101"});
    ImportRecords({{{"source_id", "core-1"}, {"history", "0\tno time\n" + ManyHistoryLines(501)}}});
    ExpectImportedUsers(501);
}

TEST_F(HistoryMemoryTest, TwoHistoryFieldsOf501EntriesShareTheRoom) {
    GivenConfiguration();
    ImportRecords({{{"log", ManyHistoryLines(501)}, {"log2", ManyHistoryLines(501)}}});
    ExpectErrorText(u"");
    ExpectImportedUsers(501);
    ExpectNoPendingHistory();
}

TEST_F(HistoryMemoryTest, ASecondFieldFillsTheRoomThatIsLeft) {
    GivenConfiguration();
    ImportRecords({{{"log", ManyHistoryLines(300)}, {"log2", ManyHistoryLines(300)}}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 501U);
    EXPECT_EQ(Text(m_core.ImportedHistory()[299].userName), "user 300");
    EXPECT_EQ(Text(m_core.ImportedHistory()[300].userName), "user 1");
    EXPECT_EQ(Text(m_core.ImportedHistory()[500].userName), "user 201");
}

TEST_F(HistoryMemoryTest, ManySmallFieldsNeverPassTheRoom) {
    for (int call = 0; call < 300; ++call) {
        Add({ValidEntry("7"), ValidEntry("8")});
    }
    EXPECT_EQ(m_importer->m_historyCount, 501);
}

TEST_F(HistoryMemoryTest, HistoryLeftByAnExceptionDoesNotReachTheNextPacket) {
    GivenConfiguration();
    m_core.OnCall("Validate", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"log", ManyHistoryLines(5)}}});
    EXPECT_EQ(m_importer->m_historyCount, 5);
    m_importer->CleanupRecordMap();
    ImportRecords({{{"log", ManyHistoryLines(2)}}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 2U);
    EXPECT_EQ(Text(m_core.ImportedHistory()[0].userName), "user 1");
    EXPECT_EQ(Text(m_core.ImportedHistory()[1].userName), "user 2");
    EXPECT_EQ(m_core.ImportedHistory()[1].recordId, 102);
}

TEST_F(HistoryMemoryTest, HistoryLeftByAnExceptionIsNotImportedByARecordWithoutHistory) {
    GivenConfiguration();
    m_core.OnCall("Validate", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"log", ManyHistoryLines(5)}}});
    m_importer->CleanupRecordMap();
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_TRUE(m_core.ImportedHistory().empty());
    EXPECT_EQ(Calls().back(), "Commit()");
}

TEST_F(HistoryMemoryTest, AFullBatchLeftByAnExceptionGivesTheNextPacketTheWholeRoom) {
    GivenConfiguration();
    m_core.OnCall("Validate", 1).Throws(ThrownKind::kText);
    ImportRecords({{{"log", ManyHistoryLines(600)}}});
    m_importer->CleanupRecordMap();
    ImportRecords({{{"log", ManyHistoryLines(501)}}});
    ExpectErrorText(u"");
    ExpectImportedUsers(501, 102);
}

TEST_F(HistoryMemoryTest, AnOverlongTextLeavesItsFieldUnterminated) {
    const std::string thirty(30, 'u');
    const std::string thirtyOne(31, 'u');
    Add({With(ValidEntry("7"), "user_name", thirty), With(ValidEntry("8"), "user_name", thirtyOne),
         With(ValidEntry("9"), "user_name", thirtyOne + "uuu")});
    ASSERT_EQ(m_importer->m_historyCount, 3);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[0].userName), thirty);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[1].userName), thirtyOne);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[2].userName), thirtyOne);
    EXPECT_EQ(Text(m_importer->m_historyBuffer[2].actionName), "modify");
}

TEST_F(HistoryMemoryTest, EveryTextIsCopiedBoundedToItsRoom) {
    const std::string text(300, 'x');
    m_importer->m_originalID = Obx_String::FromUtf8(text);
    ScriptedEntityDef& longNamed = m_core.AddRecordType(Obx_String::FromUtf8(text));
    m_importer->m_entityDef = &longNamed;
    Entry entry = ValidEntry("7");
    for (const char* key : {"user_name", "action_name", "old_state", "new_state", "comments"}) {
        entry[key] = text;
    }
    Add({entry});
    ASSERT_EQ(m_importer->m_historyCount, 1);
    const AdHistory& filled = m_importer->m_historyBuffer[0];
    EXPECT_EQ(Text(filled.sourceIdField), text.substr(0, 102));
    EXPECT_EQ(Text(filled.recordTypeName), text.substr(0, 31));
    EXPECT_EQ(Text(filled.userName), text.substr(0, 31));
    EXPECT_EQ(Text(filled.actionName), text.substr(0, 31));
    EXPECT_EQ(Text(filled.oldState), text.substr(0, 31));
    EXPECT_EQ(Text(filled.newState), text.substr(0, 31));
    EXPECT_EQ(Text(filled.comments), text.substr(0, 51));
    EXPECT_EQ(Text(filled.actionTime), "2024-01-01 10:00:00");
}

}  // namespace
