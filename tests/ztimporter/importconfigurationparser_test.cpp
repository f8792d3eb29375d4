#include "ztimporter/importconfigurationparser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/foundation/cexception.h"
#include "tests/platform/thrown_text.h"
#include "tests/ztimporter/declaration.h"
#include "tests/ztimporter/map_pairs.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

// A parser on a packet that the fixture keeps.
class ConfigurationParser : public testing::Test {
  protected:
    void GivenPacket(std::string text) {
        m_text = std::move(text);
        m_parser.SetInputData(m_text.c_str());
    }

    void GivenItems(const std::string& items) {
        GivenPacket("<configuration>" + items + "</configuration>");
    }

    bool IsConfiguration(const std::string& text) {
        GivenPacket(text);
        return m_parser.IsConfigurationData() != 0;
    }

    std::string Item(const char16_t* name) { return m_parser.GetConfigString(name).ToUtf8(); }

    // The pairs of the mapping list called "list".
    Pairs Mapping(const std::string& children) {
        GivenItems("<list>" + children + "</list>");
        CMapStringToString map(10);
        const int count = m_parser.GetReferenceMapping(u"list", map);
        EXPECT_EQ(count, map.GetCount());
        return PairsOf(map);
    }

    AdImportConfigurationDataParser& Parser() { return m_parser; }

  private:
    std::string m_text;
    AdImportConfigurationDataParser m_parser;
};

TEST_F(ConfigurationParser, KnowsNothingWithoutAText) {
    CMapStringToString map(10);
    map.SetAt(u"kept", u"yes");
    EXPECT_EQ(Parser().IsConfigurationData(), 0);
    EXPECT_EQ(Item(u"record_type"), "");
    EXPECT_EQ(Parser().GetUpdateInsert(), 0);
    EXPECT_EQ(Parser().GetRecordReferenceMapping(map), 0);
    EXPECT_THAT(PairsOf(map), ElementsAre(Pair("kept", "yes")));
}

TEST_F(ConfigurationParser, KeepsItsTextWhenItIsGivenNone) {
    GivenItems("<record_type name='bug'/>");
    Parser().SetInputData(nullptr);
    EXPECT_EQ(Item(u"record_type"), "bug");
}

TEST_F(ConfigurationParser, ReadsAPacketWithAndWithoutADeclaration) {
    EXPECT_TRUE(IsConfiguration("<configuration/>"));
    EXPECT_TRUE(IsConfiguration(kDeclaration + "<configuration/>"));
    EXPECT_TRUE(IsConfiguration(kDeclaration + "\r\n<configuration/>"));
    EXPECT_TRUE(IsConfiguration("<?xml version='1.0'?><configuration/>"));
}

TEST_F(ConfigurationParser, SkipsAsManyBytesWhereverTheDeclarationStands) {
    EXPECT_FALSE(IsConfiguration("\n" + kDeclaration + "<configuration/>"));
    EXPECT_FALSE(IsConfiguration("<configuration/>" + kDeclaration + "<configuration/>"));
    EXPECT_TRUE(IsConfiguration(std::string(38, 'x') + "<configuration/>" + kDeclaration));
}

TEST_F(ConfigurationParser, KnowsAConfigurationByTheElementThatOpensFirst) {
    EXPECT_TRUE(IsConfiguration("<configuration><record_type name='x'/></configuration>"));
    EXPECT_TRUE(IsConfiguration("<a><b><configuration/></b></a>"));
    EXPECT_TRUE(
        IsConfiguration(" <!-- c --> <a>\n <configuration"
                        " x='1'>text"));
}

TEST_F(ConfigurationParser, KnowsAConfigurationBehindAByteOrderMark) {
    EXPECT_TRUE(IsConfiguration("\xEF\xBB\xBF<configuration><record_type name='x'/>"));
    EXPECT_TRUE(IsConfiguration("\xEF\xBB\xBF<configuration>"));
    EXPECT_FALSE(IsConfiguration("<a>\xEF\xBB\xBF<configuration>"));
}

TEST_F(ConfigurationParser, KnowsOtherPacketsByWhatComesBeforeIt) {
    EXPECT_FALSE(IsConfiguration(""));
    EXPECT_FALSE(IsConfiguration("text<configuration/>"));
    EXPECT_FALSE(IsConfiguration("<a>text<configuration/></a>"));
    EXPECT_FALSE(IsConfiguration("<a></a><configuration/>"));
    EXPECT_FALSE(IsConfiguration("<a/><configuration/>"));
    EXPECT_FALSE(IsConfiguration("<record><f name='a'>1</f></record>"));
    EXPECT_FALSE(IsConfiguration("<a/>"));
}

TEST_F(ConfigurationParser, KnowsOtherPacketsByTextInFrontOfWhatCannotBeRead) {
    EXPECT_FALSE(IsConfiguration("tail</x><configuration/>"));
    EXPECT_FALSE(IsConfiguration("AT&T<configuration/>"));
    EXPECT_FALSE(IsConfiguration("tail of a section ]]></x><configuration/>"));
    EXPECT_FALSE(IsConfiguration("\x82\xAC</x><configuration/>"));
}

TEST_F(ConfigurationParser, KnowsOtherPacketsWhenTheirStartIsCutWithinACharacter) {
    const std::string padding(37, 'x');
    EXPECT_FALSE(IsConfiguration(padding + "\xC3\xBC<configuration/>" + kDeclaration));
}

TEST_F(ConfigurationParser, RefusesTagsThatOnlyLookPlain) {
    for (const char* const text :
         {"<a b=\"1\" b=\"2\">x", "<a b=\"1\"c=\"2\">x", "<a =\"1\">x", "<a b>x", "<a b=1>x",
          "<a b=\"<\">x", "<a b=\"&c;\">x", "<a b=\"\x01\">x", "<a b=\"\xFF\">x", "<a b=\"1>x",
          "<a><b c=\"1\" ?>x", "<>x", "< a>x", "<a><b"}) {
        EXPECT_NE(ThrownText([&] { IsConfiguration(text); }), "nothing was thrown") << text;
    }
}

TEST_F(ConfigurationParser, KnowsOtherPacketsByPlainTagsAndText) {
    for (const char* const text :
         {"<a>x", "\n<a>\n  <b c=\"d e\">1<", "<a b=\"\">x", "x", "<a b=''>x",
          "<a><a><a><a><a><a><a><a><a><a>x", "<configurations>x"}) {
        EXPECT_FALSE(IsConfiguration(text)) << text;
    }
    EXPECT_TRUE(IsConfiguration("<a><b c=\"d\"><configuration e=\"f\">x"));
    EXPECT_TRUE(IsConfiguration("<a><a><a><a><a><a><a><a><a><configuration>x"));
}

TEST_F(ConfigurationParser, TellsTheRootsNameByCase) {
    EXPECT_FALSE(IsConfiguration("<Configuration/>"));
    EXPECT_FALSE(IsConfiguration("<configurations/>"));
}

TEST_F(ConfigurationParser, DoesNotReadBeyondWhatTellsThePacketsKind) {
    EXPECT_TRUE(IsConfiguration("<configuration><<<"));
    EXPECT_FALSE(IsConfiguration("<record>text<f/><<<"));
}

TEST_F(ConfigurationParser, ReadsEveryTextItem) {
    GivenItems(
        "<import_data name='history'/><original_id name='source_id'/>"
        "<duplicate_id name='dup'/><record_type name='bug'/>");
    EXPECT_EQ(Parser().GetImportDataType(), u"history");
    EXPECT_EQ(Parser().GetOriginalID(), u"source_id");
    EXPECT_EQ(Parser().GetDuplicateID(), u"dup");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
}

TEST_F(ConfigurationParser, GivesTheSameAnswerTwice) {
    GivenItems("<record_type name='bug'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
}

TEST_F(ConfigurationParser, ReadsEachBooleanItemByItself) {
    using Getters = AdImportConfigurationDataParser;
    const std::vector<std::pair<std::string, int (Getters::*)()>> items = {
        {"updateinsert", &Getters::GetUpdateInsert},
        {"replacereflist", &Getters::GetReplaceRefList},
        {"updaterecord", &Getters::GetUpdateRecord},
        {"importstate", &Getters::GetImportState}};
    for (const auto& [name, get] : items) {
        GivenItems("<" + name + " name='TRUE'/>");
        for (const auto& [other, getOther] : items) {
            EXPECT_EQ((Parser().*getOther)() != 0, other == name) << name << " " << other;
        }
    }
}

TEST_F(ConfigurationParser, TakesTrueInAnyCaseAndNothingElseForTrue) {
    for (const char* text : {"TRUE", "true", "True", "tRuE"}) {
        GivenItems("<importstate name='" + std::string(text) + "'/>");
        EXPECT_NE(Parser().GetImportState(), 0) << text;
    }
    for (const char* text : {"", "1", "yes", "TRUE ", "FALSE", "T"}) {
        GivenItems("<importstate name='" + std::string(text) + "'/>");
        EXPECT_EQ(Parser().GetImportState(), 0) << text;
    }
}

TEST_F(ConfigurationParser, ReadsAMissingItemAsEmpty) {
    GivenItems("<record_type name='bug'/>");
    EXPECT_EQ(Parser().GetOriginalID(), u"");
    EXPECT_EQ(Parser().GetUpdateRecord(), 0);
}

TEST_F(ConfigurationParser, ReadsAnItemWithoutNameAsEmptyWhateverItHolds) {
    GivenItems("<record_type value='x'>bug</record_type>");
    EXPECT_EQ(Parser().GetRecordType(), u"");
}

TEST_F(ConfigurationParser, TakesTheFirstOfTwoItems) {
    GivenItems("<record_type name='bug'/><record_type name='user'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
}

TEST_F(ConfigurationParser, TakesTheFirstOfTwoItemsEvenIfItHasNoName) {
    GivenItems("<record_type/><record_type name='user'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"");
}

TEST_F(ConfigurationParser, TellsItemNamesByCase) {
    GivenItems("<Record_Type name='bug'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"");
}

TEST_F(ConfigurationParser, FindsAnItemAtAnyDepthAndOutsideTheConfiguration) {
    GivenPacket("<a><b>x</b><c><record_type name='bug'/></c></a>");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
    GivenPacket("<configuration/><record_type name='user'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"user");
}

TEST_F(ConfigurationParser, StepsOverTheTextOfItems) {
    GivenItems("<import_data name='record'>text</import_data>\n  <record_type name='bug'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"bug");
}

TEST_F(ConfigurationParser, StopsAtTextBetweenItems) {
    GivenItems("<import_data name='record'/>text<record_type name='bug'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"");
}

TEST_F(ConfigurationParser, DecodesTheValuesOfItems) {
    GivenItems("<record_type name='a &amp; \xC3\xBC&#xA;'/>");
    EXPECT_EQ(Parser().GetRecordType(), u"a & \u00FC\n");
}

TEST_F(ConfigurationParser, PassesTheStreamsExceptionOn) {
    GivenItems("<import_data name='record'/><record_type name=bug/>");
    EXPECT_EQ(Parser().GetImportDataType(), u"record");
    bool thrown = false;
    try {
        Parser().GetRecordType();
    } catch (CException* exception) {
        thrown = true;
        exception->Delete();
    }
    EXPECT_TRUE(thrown);
}

TEST_F(ConfigurationParser, ReadsEachMappingListByItsName) {
    GivenItems(
        "<record_reference_mapping_list><m target_field='r' reference_field='1'/>"
        "</record_reference_mapping_list>"
        "<history_reference_mapping_list><m target_field='h' reference_field='2'/>"
        "</history_reference_mapping_list>"
        "<attachment_reference_mapping_list><m target_field='a' reference_field='3'/>"
        "</attachment_reference_mapping_list>");
    CMapStringToString records(10);
    CMapStringToString history(10);
    CMapStringToString attachments(10);
    EXPECT_EQ(Parser().GetRecordReferenceMapping(records), 1);
    EXPECT_EQ(Parser().GetHistoryReferenceMapping(history), 1);
    EXPECT_EQ(Parser().GetAttachmentReferenceMapping(attachments), 1);
    EXPECT_THAT(PairsOf(records), ElementsAre(Pair("r", "1")));
    EXPECT_THAT(PairsOf(history), ElementsAre(Pair("h", "2")));
    EXPECT_THAT(PairsOf(attachments), ElementsAre(Pair("a", "3")));
}

TEST_F(ConfigurationParser, ReadsMappingsFromChildrenOfAnyName) {
    EXPECT_THAT(Mapping("\n <m target_field='a' reference_field='1'/>\n"
                        " <other reference_field='2' target_field='b'>text</other>\n"),
                ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST_F(ConfigurationParser, PassesOverAMappingThatLacksAField) {
    EXPECT_THAT(Mapping("<m target_field='a'/><m reference_field='1'/><m/>"
                        "<m target_field='' reference_field='2'/>"
                        "<m target_field='b' reference_field=''/>"
                        "<m target_field='c' reference_field='3'/>"),
                ElementsAre(Pair("c", "3")));
}

TEST_F(ConfigurationParser, ReadsTheFirstOfTwoMappingListsOnly) {
    EXPECT_THAT(Mapping("<m target_field='a' reference_field='1'/></list>"
                        "<list><m target_field='b' reference_field='2'/>"),
                ElementsAre(Pair("a", "1")));
}

TEST_F(ConfigurationParser, TakesTheLastMappingOfATarget) {
    EXPECT_THAT(Mapping("<m target_field='a' reference_field='1'/>"
                        "<m target_field='a' reference_field='2'/>"),
                ElementsAre(Pair("a", "2")));
}

TEST_F(ConfigurationParser, EndsAMappingListAtTheFirstTokenThatIsNoStartTag) {
    EXPECT_THAT(Mapping("<m target_field='a' reference_field='1'/>text"
                        "<m target_field='b' reference_field='2'/>"),
                ElementsAre(Pair("a", "1")));
}

TEST_F(ConfigurationParser, ReadsNestedMappingsAsFurtherOnes) {
    EXPECT_THAT(Mapping("<m target_field='a' reference_field='1'>"
                        "<n target_field='b' reference_field='2'/></m>"
                        "<m target_field='c' reference_field='3'/>"),
                ElementsAre(Pair("a", "1"), Pair("b", "2")));
}

TEST_F(ConfigurationParser, ReadsAnEmptyOrMissingMappingListAsNone) {
    EXPECT_THAT(Mapping(""), IsEmpty());
    CMapStringToString map(10);
    EXPECT_EQ(Parser().GetReferenceMapping(u"no_list", map), 0);
}

TEST_F(ConfigurationParser, AddsToTheMapItIsGiven) {
    GivenItems("<list><m target_field='a' reference_field='1'/></list>");
    CMapStringToString map(10);
    map.SetAt(u"kept", u"yes");
    EXPECT_EQ(Parser().GetReferenceMapping(u"list", map), 2);
    EXPECT_THAT(PairsOf(map), ElementsAre(Pair("kept", "yes"), Pair("a", "1")));
    EXPECT_EQ(Parser().GetReferenceMapping(u"no_list", map), 2);
}

}  // namespace
