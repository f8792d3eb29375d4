#include "tool/packet/packet_frame.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reading.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using tool::FrameDefectKind;

// The defects around the records of `text`, as "line: text", read in chunks of every size, which
// must agree.
std::vector<std::string> Defects(std::string_view text, tool::ReaderOptions options = {}) {
    std::vector<std::string> first;
    for (const std::size_t chunk : reading::ChunkSizes()) {
        std::vector<std::string> defects;
        options.chunk = chunk;
        options.frame = [&](const tool::FrameDefect& defect) {
            defects.push_back(fmt::format("{}: {}", defect.line, defect.text));
        };
        reading::ReadRecords(text, options);
        if (chunk == reading::ChunkSizes().front()) {
            first = defects;
        }
        EXPECT_EQ(defects, first) << "chunks of " << chunk << " read otherwise: " << text;
    }
    return first;
}

struct FrameCase {
    const char* what;
    std::string text;
    std::vector<std::string> defects;
};

std::string FrameCaseName(const testing::TestParamInfo<FrameCase>& info) {
    return info.param.what;
}

class SoundPackets : public testing::TestWithParam<FrameCase> {};

TEST_P(SoundPackets, HaveNoDefect) {
    EXPECT_THAT(Defects(GetParam().text), IsEmpty());
}

const std::vector<FrameCase> kSound = {
    {"ARoot", "<?xml version=\"1.0\"?>\n<bugs a='1'>\n<record>a</record>\n</bugs >\n", {}},
    {"NoRoot", "<record>a</record>\n<record>b</record>", {}},
    {"NoRecord", "<bugs/>", {}},
    {"NothingAtAll", "", {}},
    {"SeveralRoots", "<bugs><record>a</record></bugs>\n<bugs><record>b</record></bugs>", {}},
    {"PacketsOneAfterTheOther",
     "<?xml version=\"1.0\"?><a><record>a</record></a>\xEF\xBB\xBF<?xml version=\"1.0\"?>"
     "<a><record>b</record></a>",
     {}},
    {"ElementsWithTextBesideRecords",
     "<bugs><exported by=\"a > b\">today <b>or</b> so</exported><record>a</record>"
     "<count>1</count></bugs>",
     {}},
    {"NestedElements", "<a><b><record>a</record><c/></b><b /><b x='/'></b></a>", {}},
    {"CommentsAndInstructions",
     "<!-- a > b < c --><a><!--</a>--><?x <y>?><record>a</record><!-- --></a><!-- end -->",
     {}},
    {"BlankCharacterData", "<a><![CDATA[ \n]]><record>a</record></a>", {}},
    {"ADocumentType",
     "<!DOCTYPE a [<!ENTITY x \"]>\"> <!ELEMENT a ANY>]>\n<a><record>a</record></a>",
     {}},
    {"ASystemDocumentType", "<!DOCTYPE a SYSTEM 'a>b'><a><record>a</record></a>", {}},
    {"OtherSpellings", "<a><Record x='1'>text</Record><record>a</record></a>", {}},
    {"ARecordThatTookTheRootsEndAlong", "<a><record>a</a>", {}},
    {"AForeignAlphabet", "<käse><record>a</record></käse>", {}},
};

INSTANTIATE_TEST_SUITE_P(PacketFrame, SoundPackets, testing::ValuesIn(kSound), FrameCaseName);

class BrokenPackets : public testing::TestWithParam<FrameCase> {};

TEST_P(BrokenPackets, AreReported) {
    EXPECT_EQ(Defects(GetParam().text), GetParam().defects);
}

const std::vector<FrameCase> kBrokenPackets = {
    {"CutBehindARecord",
     "<bugs>\n<record>a</record>\n",
     {"3: the packet is cut short: the element <bugs>, which opens on line 1, does not end"}},
    {"CutWithinATag",
     "<bugs>\n<record>a</record>\n<rec",
     {"3: the packet is cut short: it ends within a tag"}},
    {"CutWithinAnEndTag",
     "<bugs>\n<record>a</record>\n</bu",
     {"3: the packet is cut short: it ends within a tag"}},
    {"CutWithinAnInnerElement",
     "<a>\n<b><record>a</record></b><b>",
     {"2: the packet is cut short: the element <a>, which opens on line 1, does not end"}},
    {"CutBehindABrokenRecord",
     "<a><record>a<record>b</record>",
     {"1: the packet is cut short: the element <a>, which opens on line 1, does not end"}},
    {"TextBetweenRecords",
     "<a><record>a</record>\nid=7\n<record>b</record></a>",
     {"2: text outside of records: \"id=7 \""}},
    {"TextBeforeTheFirstRecord",
     "<a>\nerror 500 <record>b</record></a>",
     {"2: text outside of records: \"error 500 \""}},
    {"TextBehindTheLastRecord",
     "<a><record>a</record>rest</a>",
     {"1: text outside of records: \"rest\""}},
    {"TextBehindTheRoot",
     "<a><record>a</record></a>\nDone.",
     {"2: text outside of records: \"Done.\""}},
    {"CharacterDataBetweenRecords",
     "<record>a</record>\n<![CDATA[x <y> ]]>",
     {"2: text outside of records: \"x ?y>\""}},
    {"ALostEndTag",
     "<a>\n<b>\n<record>a</record></a>",
     {"3: </a> comes before the end of <b>, which opens on line 2"}},
    {"AnEndTagTooMany", "<record>a</record>\n</record>", {"2: </record> closes no element"}},
    {"ATagThatDoesNotEnd",
     "<a>\n<b x='<record>a</record></a>",
     {"2: \"<\" begins a tag that does not end"}},
    {"ASignThatBeginsNoTag",
     "<record>a</record>\n< 3",
     {"2: \"<\" begins a tag that does not end", "2: text outside of records: \"3\""}},
    {"ACommentThatDoesNotClose",
     "<record>a</record>\n<!-- <b></b>",
     {"2: a comment opens and does not close"}},
    {"BytesThatAreNoText",
     "<a><record>a</record>\n\xE4\xF6</a>",
     {"2: a byte that is not UTF-8 outside of records"}},
    {"BytesThatAreNoTextInAComment",
     "<record>a</record><!-- \n\xE4 -->",
     {"2: a byte that is not UTF-8 outside of records"}},
    {"ZeroesAtTheEnd",
     "<a><record>a</record></a>\n" + std::string(5000, '\0'),
     {"2: a NUL character outside of records"}},
};

INSTANTIATE_TEST_SUITE_P(PacketFrame, BrokenPackets, testing::ValuesIn(kBrokenPackets),
                         FrameCaseName);

TEST(PacketFrame, TellsOfEachPlaceBetweenRecords) {
    EXPECT_THAT(
        Defects("<a>\n<record>a</record>x\n<record>a</record>y</a>"),
        ElementsAre("2: text outside of records: \"x \"", "3: text outside of records: \"y\""));
}

TEST(PacketFrame, ShowsTheBeginningOfALongTextWhole) {
    std::string text = "a";
    for (int i = 0; i < 100; ++i) {
        text += "ä";
    }
    const auto defects = Defects("<record>a</record>" + text);
    ASSERT_EQ(defects.size(), 1U);
    EXPECT_EQ(defects[0].size(), std::string("1: text outside of records: \"\"").size() + 79);
    EXPECT_EQ(defects[0].find("\xEF\xBF\xBD"), std::string::npos);
}

TEST(PacketFrame, TheRestOfATooLongRecordIsNoDefect) {
    tool::ReaderOptions options;
    options.recordLimit = 20;
    EXPECT_THAT(
        Defects("<a><record><f>0123456789</f><g>x</g></record><record>b</record></a>", options),
        IsEmpty());
}

TEST(PacketFrame, DoesNotFollowElementsDeeperThanTheLimit) {
    tool::ReaderOptions options;
    options.maxDepth = 3;
    EXPECT_THAT(Defects("<a><b><c></c></b></a>", options), IsEmpty());
    EXPECT_THAT(Defects("<a><b><c>\n<d><e></x>text", options),
                ElementsAre("2: the elements outside of records are nested deeper than 3, the most "
                            "that --max-depth allows, and are not looked at from here on"));
}

}  // namespace
