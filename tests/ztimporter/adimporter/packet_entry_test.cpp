#include <gtest/gtest.h>

#include "platform/messages/message_ids.h"
#include "tests/ztimporter/importer_fixture.h"

namespace {

class PacketEntryTest : public ImporterTest {
  protected:
    std::string LengthTrace(const std::string& packet) {
        return "Import begins, xml_packet length = " + std::to_string(packet.size());
    }

    Lines ParserTraces() { return m_core.Log().Texts(CallLog::Kind::kOtherTrace); }

    // The field of the referenced type that values of the field are matched by; empty for none.
    std::string Mapped(const char16_t* field) {
        Obx_String reference;
        m_importer->m_recordReferenceMapping.Lookup(field, reference);
        return reference.ToUtf8();
    }
};

TEST_F(PacketEntryTest, ANewImporterCreatesRecordsAndInsertsOnUpdate) {
    OpenImporter importer;
    EXPECT_EQ(importer.m_importDataType, u"record");
    EXPECT_EQ(importer.m_updateInsert, 1);
    EXPECT_EQ(importer.m_importState, 0);
    EXPECT_EQ(importer.m_updateRecord, 0);
    EXPECT_EQ(importer.m_replaceRefList, 0);
    EXPECT_EQ(importer.m_configurationReceived, 0);
}

TEST_F(PacketEntryTest, ANewImporterHoldsNothing) {
    OpenImporter importer;
    EXPECT_EQ(importer.m_session.GetPtr(), nullptr);
    EXPECT_EQ(importer.m_entityDef, nullptr);
    EXPECT_EQ(importer.m_recordParser, nullptr);
    EXPECT_EQ(importer.m_historyBuffer, nullptr);
    EXPECT_EQ(importer.m_historyCount, 0);
    EXPECT_EQ(importer.m_recordMap.GetCount(), 0);
    EXPECT_EQ(importer.m_originalID, u"");
    EXPECT_EQ(importer.m_duplicateID, u"");
}

TEST_F(PacketEntryTest, TracesItsLife) {
    {
        OpenImporter importer;
        importer.SetSession(nullptr);
    }
    ExpectTrace({"Constructor", "SetSession", "Destructor"});
}

TEST_F(PacketEntryTest, TheDestructorDestroysARecordParserThatIsLeft) {
    GivenCurrentRecord({{"title", "Crash"}});
    m_importer.reset();
    EXPECT_EQ(ParserTraces(), Lines{"AdImportRecordParser: Destructor"});
}

TEST_F(PacketEntryTest, AConfigurationPacketLooksTheRecordTypeUp) {
    Import(Configuration{}.Packet());
    ExpectErrorText(u"");
    ExpectCallsAndQuestions({"GetEntityDef(bug)"});
}

TEST_F(PacketEntryTest, AConfigurationPacketTracesSuccess) {
    const std::string packet = Configuration{}.Packet();
    Import(packet);
    ExpectStory({"trace: " + LengthTrace(packet), "trace: Import IsConfigurationData",
                 "GetEntityDef(bug)", "trace: Import ends successfully."});
}

TEST_F(PacketEntryTest, ThePacketsLengthIsCountedInUnits) {
    Import("<configuration name=\"\xF0\x9F\x90\x9E\"/>");
    EXPECT_EQ(Trace().front(), "Import begins, xml_packet length = 26");
}

TEST_F(PacketEntryTest, AConfigurationPacketSetsEveryValue) {
    GivenConfiguration({.importData = "history",
                        .originalId = "source_id",
                        .duplicateId = "duplicate_of",
                        .updateRecord = true,
                        .updateInsert = true,
                        .replaceRefList = true,
                        .importState = true,
                        .mapping = {{"owner", "mail"}}});
    EXPECT_EQ(m_importer->m_entityDef, &m_bug);
    EXPECT_EQ(m_importer->m_importDataType, u"history");
    EXPECT_EQ(m_importer->m_originalID, u"source_id");
    EXPECT_EQ(m_importer->m_duplicateID, u"duplicate_of");
    EXPECT_TRUE(m_importer->m_updateRecord && m_importer->m_updateInsert &&
                m_importer->m_replaceRefList && m_importer->m_importState);
    EXPECT_EQ(Mapped(u"owner"), "mail");
    EXPECT_EQ(m_importer->m_configurationReceived, 1);
}

TEST_F(PacketEntryTest, ALaterConfigurationOverwritesAlsoByNothing) {
    GivenConfiguration({.duplicateId = "duplicate_of",
                        .updateRecord = true,
                        .updateInsert = true,
                        .replaceRefList = true,
                        .importState = true});
    Import("<configuration><record_type name=\"user\"/></configuration>");
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_entityDef, &m_user);
    EXPECT_EQ(m_importer->m_importDataType, u"");
    EXPECT_EQ(m_importer->m_originalID, u"");
    EXPECT_EQ(m_importer->m_duplicateID, u"");
    EXPECT_FALSE(m_importer->m_updateRecord || m_importer->m_updateInsert ||
                 m_importer->m_replaceRefList || m_importer->m_importState);
}

TEST_F(PacketEntryTest, ReferenceMappingsOfConfigurationsAddUp) {
    GivenConfiguration({.mapping = {{"owner", "mail"}, {"parent", "title"}}});
    GivenConfiguration({.mapping = {{"owner", "login"}, {"place", "street"}}});
    EXPECT_EQ(Mapped(u"owner"), "login");
    EXPECT_EQ(Mapped(u"parent"), "title");
    EXPECT_EQ(Mapped(u"place"), "street");
}

TEST_F(PacketEntryTest, HistoryAndAttachmentMappingsAreNeverAskedFor) {
    const std::string map = "<map target_field=\"owner\" reference_field=\"login\"/>";
    Import("<configuration><record_type name=\"bug\"/><history_reference_mapping_list>" + map +
           "</history_reference_mapping_list><attachment_reference_mapping_list>" + map +
           "</attachment_reference_mapping_list></configuration>");
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_historyReferenceMapping.GetCount(), 0);
    EXPECT_EQ(m_importer->m_attachmentReferenceMapping.GetCount(), 0);
}

TEST_F(PacketEntryTest, RecordsBeforeAnyConfigurationAreRefused) {
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(Message(message_id::kNoConfiguration));
    ExpectNoCalls();
}

TEST_F(PacketEntryTest, ARefusedPacketEndsWithoutTheFinalTrace) {
    const std::string packet = Packet({Record({{"title", "Crash"}})});
    Import(packet);
    ExpectTrace({LengthTrace(packet), "Import is record data",
                 "Import ends with error: " + Message(message_id::kNoConfiguration).ToUtf8()});
    EXPECT_EQ(ParserTraces().back().find("Destructor"), std::string::npos);
    EXPECT_EQ(m_importer->m_recordParser, nullptr);
}

TEST_F(PacketEntryTest, AConfigurationThatNamesNothingLetsRecordsPassUnread) {
    m_core.OnCall("GetEntityDef").ReturnsNull();
    Import("<configuration/>");
    ExpectErrorText(u"");
    EXPECT_EQ(m_importer->m_entityDef, nullptr);
    m_core.ForgetCalls();
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    ExpectNoCalls();
}

TEST_F(PacketEntryTest, AnUnknownKindOfDataIsNotImportedAndSucceeds) {
    GivenConfiguration({.importData = "recordings"});
    const std::string packet = Packet({Record({{"title", "Crash"}})});
    Import(packet);
    ExpectErrorText(u"");
    ExpectStory({"trace: " + LengthTrace(packet), "trace: Import is record data",
                 "trace: Import ends successfully."});
}

struct DataKind {
    const char* importData;
    const char* firstTrace;
};

class DataKindTest : public PacketEntryTest, public testing::WithParamInterface<DataKind> {};

TEST_P(DataKindTest, IsChosenWithoutRegardToCase) {
    GivenConfiguration({.importData = GetParam().importData});
    ImportRecords({{{"source_id", "core-1"}}});
    EXPECT_EQ(Trace().at(2), GetParam().firstTrace);
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, DataKindTest,
    testing::Values(DataKind{"record", "ImportRecord begins"},
                    DataKind{"RECORD", "ImportRecord begins"},
                    DataKind{"history", "ImportHistory begins: m_originalID=source_id"},
                    DataKind{"History", "ImportHistory begins: m_originalID=source_id"},
                    DataKind{"attachments", "ImportAttachment begins"},
                    DataKind{"aTTACHMENTS", "ImportAttachment begins"}),
    [](const auto& instance) { return std::string(instance.param.importData); });

TEST_F(PacketEntryTest, EveryRecordOfAPacketIsCreated) {
    GivenConfiguration();
    ImportRecords({{{"title", "a"}}, {{"title", "b"}}, {{"title", "c"}}});
    ExpectErrorText(u"");
    const Lines once = {"ImportEntity(bug, '', null)"};
    const Lines end = {"Validate()", "Commit()"};
    ExpectCalls(Joined(once, Lines{"SetFieldValue(title, a, 1)"}, end, once,
                       Lines{"SetFieldValue(title, b, 1)"}, end, once,
                       Lines{"SetFieldValue(title, c, 1)"}, end));
}

TEST_F(PacketEntryTest, WithUpdateRecordEveryRecordIsUpdated) {
    GivenConfiguration({.updateRecord = true});
    GivenRecords(u"core-1", {u"33"});
    GivenRecords(u"core-2", {u"34"});
    ImportRecords({{{"source_id", "core-1"}}, {{"source_id", "core-2"}}});
    ExpectErrorText(u"");
    const auto update = [](const std::string& sourceId, const std::string& dbId) {
        return Joined(
            Search("source_id", sourceId),
            Lines{"GetRowCount()", "GetColumn(1, 0)", "ImportEntity(bug, '', " + dbId + ")",
                  "SetFieldValue(source_id, " + sourceId + ", 1)", "Validate()", "Commit()",
                  "UnbuildResultSet(source_id = " + sourceId + ")"});
    };
    ExpectCalls(Joined(update("core-1", "33"), update("core-2", "34")));
}

TEST_F(PacketEntryTest, AfterARecordFailsTheRestIsReadButNotImported) {
    GivenConfiguration();
    m_core.OnCall("SetFieldValue", 2).ReturnsText(u"refused");
    ImportRecords({{{"title", "1"}}, {{"title", "2"}}, {{"title", "3"}}, {{"title", "4"}}});
    ExpectErrorText(u"refused");
    ExpectCalls({"ImportEntity(bug, '', null)", "SetFieldValue(title, 1, 1)", "Validate()",
                 "Commit()", "ImportEntity(bug, '', null)", "SetFieldValue(title, 2, 1)",
                 "Revert()"});
}

TEST_F(PacketEntryTest, AFailedPacketTracesTheCollectedText) {
    GivenConfiguration();
    m_core.OnCall("SetFieldValue").ReturnsText(u"refused");
    ImportRecords({{{"title", "1"}}, {{"title", "2"}}});
    ExpectStoryEnds({"trace: ImportRecord begins", "trace: SetupRecordMap begins",
                     "trace: SetupRecordMap ends", "trace: CleanupRecordMap",
                     "trace: ImportRecord ends with error: refused",
                     "trace: Import ends with error: refused"});
}

TEST_F(PacketEntryTest, ARecordParserLivesForOnePacket) {
    GivenConfiguration();
    ImportRecords({{{"title", "Crash"}}});
    EXPECT_EQ(m_importer->m_recordParser, nullptr);
    const Lines traces = ParserTraces();
    EXPECT_EQ(traces.at(traces.size() - 2), "AdImportRecordParser: Destructor");
    EXPECT_EQ(traces.back(), "AdImportConfigurationDataParser: Destructor");
}

TEST_F(PacketEntryTest, ANewSessionTakesEffectForTheNextPacket) {
    ScriptedCore other;
    other.AddRecordType(u"bug").Field(u"title", ad_field_type::kShortText);
    GivenConfiguration();
    m_importer->SetSession(AdSessionPtr(new ScriptedSession(other)));
    Import(Configuration{}.Packet());
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    ExpectNoCalls();
    EXPECT_EQ(other.Log().Lines({CallLog::Kind::kCall}),
              (Lines{"GetEntityDef(bug)", "ImportEntity(bug, '', null)",
                     "SetFieldValue(title, Crash, 1)", "Validate()", "Commit()"}));
}

TEST_F(PacketEntryTest, AnotherSessionForgetsTheRecordTypeOfTheFormerOne) {
    ScriptedCore other;
    other.AddRecordType(u"bug");
    for (const char* importData : {"record", "history", "attachments"}) {
        m_importer->SetSession(AdSessionPtr(new ScriptedSession(m_core)));
        GivenConfiguration({.importData = importData});
        m_importer->SetSession(AdSessionPtr(new ScriptedSession(other)));
        EXPECT_EQ(m_importer->m_entityDef, nullptr);
        ImportRecords({{{"title", "Crash"}}});
        ExpectBadValue(u"m_entityDef != __null");
        ExpectCallsAndQuestions({});
    }
    EXPECT_TRUE(other.Log().Lines({CallLog::Kind::kCall, CallLog::Kind::kQuestion}).empty());
}

TEST_F(PacketEntryTest, NoSessionForgetsTheRecordTypeToo) {
    GivenConfiguration();
    m_importer->SetSession(nullptr);
    EXPECT_EQ(m_importer->m_entityDef, nullptr);
}

TEST_F(PacketEntryTest, TheSameSessionAgainKeepsTheRecordType) {
    GivenConfiguration();
    m_importer->SetSession(m_importer->m_session);
    ImportRecords({{{"title", "Crash"}}});
    ExpectErrorText(u"");
    EXPECT_EQ(Calls().back(), "Commit()");
}

TEST_F(PacketEntryTest, ThePacketIsNotChangedByItsEscapes) {
    GivenConfiguration();
    ImportRecords({{{"title", "a<b & \"c\" \xC3\xB8"}}});
    EXPECT_EQ(Calls().at(1), "SetFieldValue(title, a<b & \"c\" \xC3\xB8, 1)");
}

}  // namespace
