#include <gtest/gtest.h>

#include <memory>

#include "tests/ztimporter/history_fixture.h"
#include "tests/ztimporter/throwing_sink.h"
#include "ztimporter/importrecordparser.h"

// What a packet leaves in the importer, and who releases it.

namespace {

class LeftBehindTest : public HistoryTest {
  protected:
    LeftBehindTest() { m_importer->m_originalID_value = u""; }

    // A record whose pending history an exception leaves behind. The test owns it from then on.
    std::unique_ptr<AdHistory[]> ImportAndLeaveABatch() {
        m_core.OnCall("Validate", 1).Throws(ThrownKind::kUnknown);
        ImportRecords({{{"log", ManyHistoryLines(2)}}});
        m_importer->CleanupRecordMap();
        return std::unique_ptr<AdHistory[]>(m_importer->m_historyBuffer);
    }
};

TEST_F(LeftBehindTest, ABatchIsNotFreedByTheNextPacket) {
    GivenConfiguration();
    const auto batch = ImportAndLeaveABatch();
    ASSERT_NE(batch, nullptr);
    ImportRecords({{{"log", ManyHistoryLines(1)}}});
    ExpectErrorText(u"");
    ExpectNoPendingHistory();
    EXPECT_EQ(Text(batch[1].userName), "user 2");
}

TEST_F(LeftBehindTest, ABatchIsNotFreedByAPacketOfAnotherKind) {
    GivenConfiguration();
    const auto batch = ImportAndLeaveABatch();
    ASSERT_NE(batch, nullptr);
    GivenConfiguration({.importData = "none"});
    ImportRecords({{{"title", "Crash"}}});
    EXPECT_EQ(m_importer->m_historyBuffer, nullptr);
    EXPECT_EQ(Text(batch[1].userName), "user 2");
}

TEST_F(LeftBehindTest, ABatchStaysThroughAConfiguration) {
    GivenConfiguration();
    const auto batch = ImportAndLeaveABatch();
    GivenConfiguration();
    EXPECT_EQ(m_importer->m_historyBuffer, batch.get());
    EXPECT_EQ(m_importer->m_historyCount, 2);
}

TEST_F(LeftBehindTest, ABatchIsNotFreedWithTheImporter) {
    GivenConfiguration();
    const auto batch = ImportAndLeaveABatch();
    ASSERT_NE(batch, nullptr);
    m_importer.reset();
    EXPECT_EQ(Text(batch[0].userName), "user 1");
}

TEST_F(LeftBehindTest, AParserIsNotDestroyedByTheNextPacket) {
    GivenConfiguration();
    {
        ThrowingSink sink(m_core.Log(), ThrownKind::kUnknown, "NextRecord,");
        ImportRecords({});
    }
    const std::unique_ptr<AdImportRecordParser> parser(m_importer->m_recordParser);
    ASSERT_NE(parser, nullptr);
    ImportRecords({});
    ExpectErrorText(u"");
    EXPECT_EQ(parser->UnEscape(u"&lt;"), u"<");
}

// Lines that all fall away leave a batch without entries.
class EmptyBatchTest : public LeftBehindTest, public testing::WithParamInterface<std::string> {};

constexpr const char* kSevenColumns = "7\t2024-01-01\tann\tmodify\tNEW\tOPEN\tcomment\n";

TEST_P(EmptyBatchTest, IsFreedWithTheRecord) {
    const bool update = GetParam() == "update";
    const bool history = GetParam() == "history";
    GivenConfiguration({.importData = history ? "history" : "record", .updateRecord = update});
    GivenRecords(u"core-1", {u"33"});
    ImportRecords({{{"source_id", "core-1"},
                    {history ? "history" : "log", history ? "7\tno time\n" : kSevenColumns}}});
    EXPECT_EQ(m_error.IsEmpty(), !history);
    ExpectNoPendingHistory();
    EXPECT_TRUE(m_core.ImportedHistory().empty());
}

INSTANTIATE_TEST_SUITE_P(Operations, EmptyBatchTest, testing::Values("create", "update", "history"),
                         [](const auto& instance) { return instance.param; });

TEST_F(LeftBehindTest, ReallyImportHistoryFreesAnEmptyBatch) {
    Add({});
    EXPECT_EQ(m_importer->ReallyImportHistory(m_error), 1);
    ExpectNoPendingHistory();
}

TEST_F(LeftBehindTest, AFieldWithoutAUsableLineDoesNotTouchTheNextOne) {
    GivenConfiguration();
    ImportRecords({{{"log", kSevenColumns}, {"log2", ManyHistoryLines(2)}}});
    ExpectErrorText(u"");
    ASSERT_EQ(m_core.ImportedHistory().size(), 2U);
    EXPECT_EQ(Text(m_core.ImportedHistory()[1].userName), "user 2");
    ExpectNoPendingHistory();
}

}  // namespace
