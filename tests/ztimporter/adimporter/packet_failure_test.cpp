#include <gtest/gtest.h>

#include <algorithm>
#include <array>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"
#include "tests/ztimporter/throwing_sink.h"
#include "tests/ztimporter/thrown_cases.h"

// Packets that end in an exception or hold what no packet should.

namespace {

class PacketFailureTest : public ImporterTest {
  protected:
    Lines ParserTraces() { return m_core.Log().Texts(CallLog::Kind::kOtherTrace); }

    bool ConfigurationParserWasDestroyed() {
        const Lines traces = ParserTraces();
        return std::find(traces.begin(), traces.end(),
                         "AdImportConfigurationDataParser: Destructor") != traces.end();
    }
};

TEST_F(PacketFailureTest, AnUnknownRecordTypeIsNamed) {
    Import(Configuration{.recordType = "bugg"}.Packet());
    ExpectErrorText(Message(message_id::kUnknownRecordType, {{u"_datatype_", u"bugg"}}));
    EXPECT_EQ(m_importer->m_configurationReceived, 0);
}

TEST_F(PacketFailureTest, AnUnknownRecordTypeTracesTheCoresText) {
    Import(Configuration{.recordType = "bugg"}.Packet());
    const Obx_String text = Message(message_id::kUnknownRecordType, {{u"_datatype_", u"bugg"}});
    const Obx_String core = CoreMessage(u"no record type bugg").FullMsg();
    ExpectStoryEnds(
        {"trace: Import IsConfigurationData", "GetEntityDef(bugg)",
         "trace: Import ends with error: " + text.ToUtf8() + ", Core error: " + core.ToUtf8()});
    EXPECT_FALSE(ConfigurationParserWasDestroyed());
}

TEST_F(PacketFailureTest, AfterAnUnknownRecordTypeTheEarlierConfigurationStaysInForce) {
    GivenConfiguration({.duplicateId = "duplicate_of", .mapping = {{"owner", "mail"}}});
    Import(Configuration{.recordType = "bugg",
                         .importData = "history",
                         .originalId = "other",
                         .updateRecord = true,
                         .mapping = {{"owner", "login"}}}
               .Packet());
    EXPECT_EQ(m_importer->m_entityDef, &m_bug);
    EXPECT_EQ(m_importer->m_importDataType, u"record");
    EXPECT_EQ(m_importer->m_originalID, u"source_id");
    EXPECT_EQ(m_importer->m_duplicateID, u"duplicate_of");
    EXPECT_EQ(m_importer->m_updateRecord, 0);
    EXPECT_EQ(m_importer->m_configurationReceived, 1);
    Obx_String mapped;
    m_importer->m_recordReferenceMapping.Lookup(u"owner", mapped);
    EXPECT_EQ(mapped, u"mail");
}

class RecordTypeLookupTest : public PacketFailureTest,
                             public testing::WithParamInterface<ThrownKind> {};

TEST_P(RecordTypeLookupTest, EndsThePacketByAnException) {
    m_core.OnCall("GetEntityDef").Throws(GetParam());
    Import(Configuration{}.Packet());
    const Obx_String text = AppendedTextOf(GetParam(), u"boom");
    ExpectErrorText(text);
    ExpectStoryEnds({"GetEntityDef(bug)", "trace: Import ends with error: " + text.ToUtf8()});
    EXPECT_EQ(m_importer->m_configurationReceived, 0);
    EXPECT_EQ(m_importer->m_originalID, u"");
    EXPECT_FALSE(ConfigurationParserWasDestroyed());
}

INSTANTIATE_TEST_SUITE_P(OtherThanMessages, RecordTypeLookupTest,
                         testing::Values(ThrownKind::kFoundation, ThrownKind::kText,
                                         ThrownKind::kUnknown),
                         NameOfKind);

TEST_F(PacketFailureTest, WithoutASessionNoRecordTypeIsFound) {
    m_importer->SetSession(nullptr);
    Import(Configuration{}.Packet());
    ExpectErrorText(Message(message_id::kUnknownRecordType, {{u"_datatype_", u"bug"}}));
    ExpectNoCalls();
}

TEST_F(PacketFailureTest, ANullPacketCountsAsAnEmptyOne) {
    GivenConfiguration();
    m_error = m_importer->Import(nullptr);
    ExpectErrorText(u"");
    ExpectStory({"trace: Import begins, xml_packet length = 0", "trace: Import is record data",
                 "trace: Import ends successfully."});
}

TEST_F(PacketFailureTest, ANullPacketBeforeAnyConfigurationIsRefused) {
    m_error = m_importer->Import(nullptr);
    ExpectErrorText(Message(message_id::kNoConfiguration));
}

TEST_F(PacketFailureTest, APacketThatIsNotUtf16IsRefusedWithThePosition) {
    GivenConfiguration();
    const std::array<unsigned short, 5> packet = {u'<', u'a', 0xD800, u'>', 0};
    m_error = m_importer->Import(packet.data());
    const Obx_String text = u"\n" + Message(message_id::kInvalidUtf16, {{u"_position_", u"2"}});
    ExpectErrorText(text);
    ExpectStory({"trace: Import begins, xml_packet length = 4",
                 "trace: Import ends with error: " + text.ToUtf8()});
    EXPECT_TRUE(ParserTraces().empty());
}

TEST_F(PacketFailureTest, MalformedXmlBeforeTheFirstElementEndsThePacket) {
    GivenConfiguration();
    Import("<configuration name=></configuration>");
    ExpectXmlError(u"line 1, column 21: not well-formed (invalid token)");
    EXPECT_EQ(Trace().back(), "Import ends with error: " + m_error.ToUtf8());
    EXPECT_FALSE(ConfigurationParserWasDestroyed());
}

TEST_F(PacketFailureTest, MalformedXmlInARecordIsThatRecordsError) {
    GivenConfiguration();
    Import("<record><field name=\"title\">a</field><field</record>");
    ExpectXmlError(u"line 1, column 44: not well-formed (invalid token)");
    ExpectNoCalls();
    ExpectCleanRecordMap();
}

TEST_F(PacketFailureTest, MalformedXmlAfterARecordHarmsOnlyWhatFollows) {
    GivenConfiguration();
    Import(Record({{"title", "a"}}) + "<field <<< />");
    ExpectErrorText(u"");
    EXPECT_EQ(Calls().back(), "Commit()");
}

TEST_F(PacketFailureTest, ANullRecordTypeIsReportedAsABadValue) {
    m_core.OnCall("GetEntityDef").ReturnsNull();
    Import(Configuration{.recordType = "nothing"}.Packet());
    ExpectErrorText(u"");
    ImportRecords({{{"title", "Crash"}}});
    ExpectBadValue(u"m_entityDef != __null");
    EXPECT_EQ(Calls(), Lines{"GetEntityDef(nothing)"});
}

class NullRecordTest : public PacketFailureTest,
                       public testing::WithParamInterface<Configuration> {};

TEST_P(NullRecordTest, IsReportedAsABadValue) {
    GivenConfiguration(GetParam());
    GivenRecords(u"core-1", {u"33"});
    m_core.OnCall("ImportEntity").ReturnsNull();
    ImportRecords({{{"source_id", "core-1"},
                    {"history", ManyHistoryLines(1)},
                    {"files", AttachmentLines("7", "a.txt", "")}}});
    ExpectBadValue(u"entity != __null");
    ExpectRecordMapLeft(u"core-1");
}

INSTANTIATE_TEST_SUITE_P(EveryOperation, NullRecordTest,
                         testing::Values(Configuration{}, Configuration{.updateRecord = true},
                                         Configuration{.importData = "history"},
                                         Configuration{.importData = "attachments"}),
                         [](const auto& instance) {
                             return instance.param.importData +
                                    (instance.param.updateRecord ? "Update" : "");
                         });

// The one step of Import that is inside no other operation is the walk to the next record.
class WalkToTheNextRecordTest : public PacketFailureTest,
                                public testing::WithParamInterface<ThrownKind> {
  protected:
    void ImportWithAThrowingWalk() {
        ThrowingSink sink(m_core.Log(), GetParam(), "NextRecord,");
        ImportRecords({{{"title", "Crash"}}});
    }
};

TEST_P(WalkToTheNextRecordTest, EndsThePacketByAnException) {
    GivenConfiguration();
    ImportWithAThrowingWalk();
    const Obx_String text = AppendedTextOf(GetParam(), u"boom");
    ExpectErrorText(text);
    EXPECT_EQ(Trace().back(), "Import ends with error: " + text.ToUtf8());
    ExpectNoCalls();
}

TEST_P(WalkToTheNextRecordTest, LeavesTheRecordParserForTheNextPacketToReplace) {
    GivenConfiguration();
    ImportWithAThrowingWalk();
    EXPECT_NE(m_importer->m_recordParser, nullptr);
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_recordParser, nullptr);
    EXPECT_EQ(Calls().back(), "Commit()");
}

INSTANTIATE_TEST_SUITE_P(AllKinds, WalkToTheNextRecordTest, testing::ValuesIn(kThrownKinds),
                         NameOfKind);

}  // namespace
