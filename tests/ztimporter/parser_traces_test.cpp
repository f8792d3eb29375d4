#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/foundation/cexception.h"
#include "tests/platform/thrown_text.h"
#include "tests/support/trace_recorder.h"
#include "tests/ztimporter/declaration.h"
#include "ztimporter/importconfigurationparser.h"
#include "ztimporter/importrecordparser.h"
#include "ztimporter/trace.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// The traces of the call, without their tag, which must be that one.
template <typename Call>
std::vector<std::string> TracesOf(const std::string& tag, Call&& call) {
    TraceRecorder recorder;
    call();
    std::vector<std::string> traces = recorder.Take();
    for (std::string& trace : traces) {
        EXPECT_TRUE(trace.starts_with(tag + ": ")) << trace;
        trace.erase(0, tag.size() + 2);
    }
    return traces;
}

template <typename Call>
std::vector<std::string> RecordParserTraces(Call&& call) {
    return TracesOf("AdImportRecordParser", call);
}

template <typename Call>
std::vector<std::string> ConfigurationParserTraces(Call&& call) {
    return TracesOf("AdImportConfigurationDataParser", call);
}

TEST(RecordParserTrace, OfItsLife) {
    EXPECT_THAT(RecordParserTraces([] { AdImportRecordParser parser; }),
                ElementsAre("Constructor", "Destructor"));
}

TEST(RecordParserTrace, OfNoText) {
    AdImportRecordParser parser;
    CMapStringToString map(10);
    EXPECT_THAT(RecordParserTraces([&] {
                    parser.SetInputData(nullptr);
                    parser.NextRecord();
                    parser.GetRecordMap(map);
                }),
                ElementsAre("SetInputData, m_strXML is NULL.", "NextRecord, m_strXML is NULL",
                            "GetRecordMap, m_strXML is NULL"));
}

TEST(RecordParserTrace, OfAWalkOverAPacket) {
    const std::string record = "<record><f name='a'>1</f><f name='b'>2</f></record>";
    const std::string packet = kDeclaration + "\n" + record + record;
    AdImportRecordParser parser;
    CMapStringToString map(10);
    map.SetAt(u"c", u"3");
    EXPECT_THAT(
        RecordParserTraces([&] {
            parser.SetInputData(packet.c_str());
            parser.NextRecord();
            parser.GetRecordMap(map);
            parser.NextRecord();
            parser.NextRecord();
            parser.NextRecord();
        }),
        ElementsAre("SetInputData, m_strXML length = 141", "NextRecord, m_strXML length = 102",
                    "GetRecordMap, fields number = 3", "NextRecord, m_strXML length = 51",
                    "NextRecord, m_strXML length = 50", "NextRecord, m_strXML length = 50"));
}

TEST(RecordParserTrace, CountsBytes) {
    AdImportRecordParser parser;
    EXPECT_THAT(RecordParserTraces([&] { parser.SetInputData("\xC3\xBC"); }),
                ElementsAre("SetInputData, m_strXML length = 2"));
}

TEST(RecordParserTrace, OfARecordThatIsMalformedHasNoEnd) {
    AdImportRecordParser parser;
    parser.SetInputData("<record><f></record>");
    CMapStringToString map(10);
    EXPECT_THAT(RecordParserTraces([&] {
                    try {
                        parser.GetRecordMap(map);
                    } catch (CException* exception) {
                        exception->Delete();
                    }
                }),
                IsEmpty());
}

TEST(RecordParserTrace, OfTheFieldFormats) {
    AdImportRecordParser parser;
    CStringArray items;
    EXPECT_THAT(
        RecordParserTraces([&] {
            parser.UnEscape(u"&amp;");
            parser.SplitReferenceListValue(u"a,b", items);
            for (const CMapStringToString* entry :
                 parser.ExtractHistoryData(u"1\n1\t2\t3\t4\t5\t6\t7\n2\n3")) {
                delete entry;
            }
            for (const CMapStringToString* entry : parser.ExtractAttachmentData(u"1\n2\n3\n4\n5")) {
                delete entry;
            }
        }),
        ElementsAre("SplitReferenceListValue, result size = 2",
                    "ExtractHistoryData, result size = 3",
                    "ExtractAttachmentData, result size = 1"));
}

TEST(ConfigurationParserTrace, OfItsLife) {
    EXPECT_THAT(ConfigurationParserTraces([] { AdImportConfigurationDataParser parser; }),
                ElementsAre("Constructor", "Destructor"));
}

TEST(ConfigurationParserTrace, OfNoText) {
    AdImportConfigurationDataParser parser;
    CMapStringToString map(10);
    EXPECT_THAT(ConfigurationParserTraces([&] {
                    parser.SetInputData(nullptr);
                    parser.IsConfigurationData();
                    parser.GetConfigString(u"any");
                    parser.GetReferenceMapping(u"list", map);
                }),
                ElementsAre("SetInputData, m_strXML is NULL.", "IsConfigurationData",
                            "GetConfigString, item = any",
                            "GetConfigString, value = ", "GetReferenceMapping, type = list"));
}

TEST(ConfigurationParserTrace, OfEveryQuestion) {
    const std::string packet = kDeclaration +
                               "<configuration><import_data name='record'/>"
                               "<updateinsert name='TRUE'/></configuration>";
    AdImportConfigurationDataParser parser;
    CMapStringToString map(10);
    EXPECT_THAT(
        ConfigurationParserTraces([&] {
            parser.SetInputData(packet.c_str());
            parser.IsConfigurationData();
            parser.GetRecordType();
            parser.GetOriginalID();
            parser.GetDuplicateID();
            parser.GetImportDataType();
            parser.GetImportState();
            parser.GetUpdateRecord();
            parser.GetReplaceRefList();
            parser.GetUpdateInsert();
            parser.GetRecordReferenceMapping(map);
            parser.GetHistoryReferenceMapping(map);
            parser.GetAttachmentReferenceMapping(map);
        }),
        ElementsAre("SetInputData, m_strXML length = 124", "IsConfigurationData",
                    "GetConfigString, item = record_type",
                    "GetConfigString, value = ", "GetConfigString, item = original_id",
                    "GetConfigString, value = ", "GetConfigString, item = duplicate_id",
                    "GetConfigString, value = ", "GetConfigString, item = import_data",
                    "GetConfigString, value = record", "GetConfigString, item = importstate",
                    "GetConfigString, value = ", "GetConfigString, item = updaterecord",
                    "GetConfigString, value = ", "GetConfigString, item = replacereflist",
                    "GetConfigString, value = ", "GetConfigString, item = updateinsert",
                    "GetConfigString, value = TRUE",
                    "GetReferenceMapping, type = record_reference_mapping_list",
                    "GetReferenceMapping, type = history_reference_mapping_list",
                    "GetReferenceMapping, type = attachment_reference_mapping_list"));
}

TEST(Trace, IsNotWrittenWhileItsFlagIsOff) {
    TraceRecorder recorder;
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    AdImportRecordParser parser;
    EXPECT_THAT(recorder.Take(), IsEmpty());
}

TEST(Trace, IsNotWrittenToASinkThatDoesNotWantIt) {
    class Unwilling : public TraceRecorder {
        bool Wants(int /*flag*/) override { return false; }
    };
    Unwilling recorder;
    AdImportRecordParser parser;
    EXPECT_THAT(recorder.Take(), IsEmpty());
}

TEST(Trace, FindsItsArgumentsOutOnlyWhenItIsWritten) {
    int calls = 0;
    const auto length = [&] { return ++calls; };
    Trace(u"Tag", u"length = %d", length);
    EXPECT_EQ(calls, 0);
    TraceRecorder recorder;
    Trace(u"Tag", u"length = %d", length);
    EXPECT_EQ(calls, 1);
    EXPECT_THAT(recorder.Take(), ElementsAre("Tag: length = 1"));
}

class Failing : public TraceRecorder {
    void Write(const Obx_String& /*tag*/, const Obx_String& /*text*/) override {
        throw new CException(u"the disk is full");
    }
};

TEST(Trace, ThatFailsLeavesAParserWithTheTextItWasGiven) {
    AdImportRecordParser records;
    AdImportConfigurationDataParser configuration;
    {
        Failing recorder;
        EXPECT_EQ(ThrownText([&] { records.SetInputData("<record/>  <record>"); }),
                  "the disk is full");
        EXPECT_EQ(ThrownText([&] { configuration.SetInputData("<configuration/>"); }),
                  "the disk is full");
    }
    EXPECT_EQ(records.NextRecord(), 1);
    EXPECT_EQ(configuration.IsConfigurationData(), 1);
}

TEST(Trace, ThatFailsDoesNotEndTheProcessFromADestructor) {
    auto parser = std::make_unique<AdImportRecordParser>();
    Failing recorder;
    EXPECT_NO_THROW(parser.reset());
}

}  // namespace
