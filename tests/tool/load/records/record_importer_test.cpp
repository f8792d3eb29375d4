#include "tool/load/records/record_importer.h"

#include <gmock/gmock.h>

#include "load_fixture.h"
#include "platform/foundation/utf.h"
#include "recorddb/database.h"

namespace tool {
namespace {

// The importer keeps the values of a record that it skips silently. A history packet's record that
// names no record of its own is then taken for the one before it.
class RecordIsolationTest : public OnEachEngine<LoadFixture> {
  protected:
    RecordIsolationTest() {
        Load({Configuration("c.xml", "record", "bug", "source_id"),
              Records("r.xml", {{{"source_id", "a"}, {"title", "A"}}})});
        m_open = recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadWrite);
        m_session = m_open->OpenSession({});
        m_configuration.Apply(
            "<configuration><import_data name=\"history\"/>"
            "<record_type name=\"bug\"/><original_id name=\"source_id\"/>"
            "</configuration>",
            "test");
    }

    std::string HistoryEntries() {
        auto& statement = m_open->GetConnection().Prepare("SELECT count(*) FROM zt_history");
        statement.Step();
        const std::string count(statement.Text(0));
        statement.Reset();
        return count;
    }

    const std::string m_skipped = RecordXml({{"source_id", "a"}});
    const std::string m_nameless =
        RecordXml({{"history", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW"}});

    std::unique_ptr<recorddb::Database> m_open;
    AdPtr<recorddb::Session> m_session;
    ImportConfiguration m_configuration;
};

Obx_String BareImport(AdImporter& importer, const std::string& packet) {
    return importer.Import(Obx_String::FromUtf8(packet).Units());
}

TEST_P(RecordIsolationTest, TheBareImporterCarriesASkippedRecordIntoTheNextPacket) {
    AdImporter importer;
    importer.SetSession(AdSessionPtr(m_session.GetPtr()));
    BareImport(importer, m_configuration.ToPacket());
    EXPECT_EQ(BareImport(importer, m_skipped), u"");
    EXPECT_EQ(BareImport(importer, m_nameless), u"");
    EXPECT_EQ(HistoryEntries(), "1") << "the leak that the tool must guard against";
}

TEST_P(RecordIsolationTest, TheToolCarriesNothingOfASkippedRecord) {
    RecordImporter importer(m_session);
    EXPECT_EQ(importer.Configure(m_configuration), "");
    EXPECT_TRUE(importer.Import(m_skipped).Skipped());
    EXPECT_THAT(importer.Import(m_nameless).error, testing::HasSubstr("source_id"));
    EXPECT_EQ(HistoryEntries(), "0");
}

TEST_P(RecordIsolationTest, AFreshImporterHasTheConfigurationInForce) {
    RecordImporter importer(m_session);
    importer.Configure(m_configuration);
    EXPECT_TRUE(importer.Import("<record><broken></record>").Failed());
    const auto outcome = importer.Import(RecordXml(
        {{"source_id", "a"}, {"history", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW"}}));
    EXPECT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.done.historyEntries, 1);
}

TEST_P(RecordIsolationTest, ARefusedConfigurationLeavesTheFormerOneInForce) {
    RecordImporter importer(m_session);
    importer.Configure(m_configuration);
    ImportConfiguration other;
    other.Apply("<configuration><record_type name=\"bogus\"/></configuration>", "other");
    EXPECT_THAT(importer.Configure(other), testing::HasSubstr("bogus"));
    EXPECT_TRUE(importer.Import(m_skipped).Skipped());
    EXPECT_THAT(importer.Import(m_nameless).error, testing::HasSubstr("source_id"));
}

ON_EACH_ENGINE(RecordIsolationTest);

}  // namespace
}  // namespace tool
