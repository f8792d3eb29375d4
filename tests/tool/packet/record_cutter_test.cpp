#include "tool/packet/record_cutter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "reading.h"

namespace {

using reading::Raws;
using reading::Read;
using reading::ReadAtEveryChunkSize;
using reading::Unseen;
using testing::ElementsAre;
using testing::IsEmpty;
using tool::RecordDefect;

struct CutCase {
    const char* what;
    const char* text;
    std::vector<std::string> raws;
};

class Cutting : public testing::TestWithParam<CutCase> {};

TEST_P(Cutting, GivesTheTextsOfTheRecords) {
    EXPECT_EQ(Raws(GetParam().text), GetParam().raws);
}

std::string CutCaseName(const testing::TestParamInfo<CutCase>& info) {
    return info.param.what;
}

const std::vector<CutCase> kWhole = {
    {"NothingFromAnEmptyText", "", {}},
    {"NothingFromADeclaration", R"(<?xml version="1.0" encoding="UTF-8"?>)", {}},
    {"OneRecord", "<record>a</record>", {"<record>a</record>"}},
    {"AnEmptyRecord", "<record></record>", {"<record></record>"}},
    {"RecordsSideBySide",
     "<record>a</record><record>b</record>",
     {"<record>a</record>", "<record>b</record>"}},
    {"RecordsInsideAnElement",
     "<records>\n<record>a</record>\n  <record>b</record>\n</records>\n",
     {"<record>a</record>", "<record>b</record>"}},
    {"TextAroundRecordsIsLeftOut",
     "x <y> r <record>a</record> z <rec <record>b</record> </record> q",
     {"<record>a</record>", "<record>b</record>"}},
    {"FieldsWithOtherTags",
     R"(<record><f name="a">1 &lt; 2</f><f name="b"/><recorder name="c"></recorder></record>)",
     {R"(<record><f name="a">1 &lt; 2</f><f name="b"/><recorder name="c"></recorder></record>)"}},
    {"AnEndTagWithBlanks",
     "<record>a</record \n><record>b</record>",
     {"<record>a</record \n>", "<record>b</record>"}},
    {"ANestedRecordElementEndsTheRecord",
     "<record><record id='1'>a</record>b</record>",
     {"<record><record id='1'>a</record>"}},
    {"AGreaterSignInAnAttribute",
     R"(<record><f name="a>b</f></record>)",
     {R"(<record><f name="a>b</f></record>)"}},
};
INSTANTIATE_TEST_SUITE_P(OfWholeRecords, Cutting, testing::ValuesIn(kWhole), CutCaseName);

const std::vector<CutCase> kSections = {
    {"ACommentHidesTags",
     "<record>a<!-- </record><record> -->b</record>",
     {"<record>a<!-- </record><record> -->b</record>"}},
    {"ACDataSectionHidesTags",
     "<record><![CDATA[</record><record>]] ]> ]]>b</record>",
     {"<record><![CDATA[</record><record>]] ]> ]]>b</record>"}},
    {"AnInstructionHidesTags",
     "<record><?go </record><record> ? > ?>b</record>",
     {"<record><?go </record><record> ? > ?>b</record>"}},
    {"SectionsBetweenRecordsHideRecords",
     "<!-- <record>a</record> --><?go <record>b</record>?><![CDATA[<record>c</record>]]>"
     "<record>d</record>",
     {"<record>d</record>"}},
    {"SectionMarksInsideOtherSectionsMeanNothing",
     "<record><!-- <![CDATA[ <?a --><![CDATA[ <!-- <?b ]]></record><record>c</record>",
     {"<record><!-- <![CDATA[ <?a --><![CDATA[ <!-- <?b ]]></record>", "<record>c</record>"}},
    {"ACommentOfDashes",
     "<record><!--------></record><record>b</record>",
     {"<record><!--------></record>", "<record>b</record>"}},
    {"TheOpeningDashesDoNotCloseAComment",
     "<record><!--></record> --></record>",
     {"<record><!--></record> --></record>"}},
    {"AMarkThatIsNoSection",
     "<record><!x <? <![CDATX[ </record><record>b</record>",
     {"<record><!x <? <![CDATX[ </record>", "<record>b</record>"}},
};
INSTANTIATE_TEST_SUITE_P(AroundSections, Cutting, testing::ValuesIn(kSections), CutCaseName);

const std::vector<CutCase> kCutRecords = {
    {"ARecordWithoutEndStopsAtTheNext",
     "<record>a<record>b</record>",
     {"<record>a", "<record>b</record>"}},
    {"ARecordWithoutEndStopsAtTheEndOfTheText", "<record>a</recor", {"<record>a</recor"}},
    {"AnEndTagOfAnotherNameDoesNotEndIt",
     "<record>a</records><record>b</record>",
     {"<record>a</records>", "<record>b</record>"}},
    {"AnOpenCommentCostsOneRecord",
     "<record>a<!-- x</record><record>b</record><record>c</record>",
     {"<record>a<!-- x</record>", "<record>b</record>", "<record>c</record>"}},
    {"AnOpenCommentIsNotClosedByALaterOne",
     "<record>a<!-- x</record><record>b<!-- y --></record>",
     {"<record>a<!-- x</record>", "<record>b<!-- y --></record>"}},
    {"AnOpenCommentBetweenRecordsHidesNothing",
     "<!-- x <record>a</record><!-- y --><record>b</record>",
     {"<record>a</record>", "<record>b</record>"}},
    {"AnOpenCDataSectionCostsOneRecord",
     "<record>a<![CDATA[ x</record><record>b</record>",
     {"<record>a<![CDATA[ x</record>", "<record>b</record>"}},
    {"AnOpenInstructionCostsOneRecord",
     "<record>a<?php x</record><record>b</record>",
     {"<record>a<?php x</record>", "<record>b</record>"}},
    {"ManyOpenSections",
     "<record><?a<?b<![CDATA[<![CDATA[<!--<!--</record><record>b</record>",
     {"<record><?a<?b<![CDATA[<![CDATA[<!--<!--</record>", "<record>b</record>"}},
    {"ATextCutInsideAMark", "<record>a</record><!-", {"<record>a</record>"}},
};
INSTANTIATE_TEST_SUITE_P(OfBrokenRecords, Cutting, testing::ValuesIn(kCutRecords), CutCaseName);

TEST(RecordCutter, TellsWhichRecordsDoNotEnd) {
    std::vector<Read> records = ReadAtEveryChunkSize("<record>a<record>b</record><record>c");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_EQ(records[0].defect, RecordDefect::Unterminated);
    EXPECT_EQ(records[1].defect, RecordDefect::None);
    EXPECT_EQ(records[2].defect, RecordDefect::Unterminated);
}

TEST(RecordCutter, TellsWhichRecordsHoldAnOpenSection) {
    std::vector<Read> records = ReadAtEveryChunkSize(
        "<record><!-- </record><record><!-- --></record><record><?a </record>");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_TRUE(records[0].openSection);
    EXPECT_FALSE(records[1].openSection);
    EXPECT_TRUE(records[2].openSection);
}

TEST(RecordCutter, NumbersRecordsAndTellsTheirPlace) {
    std::vector<Read> records =
        ReadAtEveryChunkSize("<records>\n<record>\na\n</record>\r\n\n<record>b</record></records>");
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].ordinal, 0U);
    EXPECT_EQ(records[0].line, 2U);
    EXPECT_EQ(records[0].offset, 10U);
    EXPECT_EQ(records[1].ordinal, 1U);
    EXPECT_EQ(records[1].line, 6U);
    EXPECT_EQ(records[1].offset, 33U);
}

std::vector<Read> ReadWithLimit(const std::string& text, std::size_t limit) {
    tool::ReaderOptions options;
    options.recordLimit = limit;
    return ReadAtEveryChunkSize(text, options);
}

TEST(RecordCutter, ReadsARecordThatIsJustShortEnough) {
    std::string record = "<record>" + std::string(20, 'x') + "</record>";
    std::vector<Read> records = ReadWithLimit(record + record, record.size());
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].raw, record);
    EXPECT_EQ(records[0].defect, RecordDefect::None);
}

TEST(RecordCutter, GoesOnAtTheNextRecordAfterOneThatIsTooLong) {
    std::string big = "<record>" + std::string(100, 'x') + "</record>";
    std::vector<Read> records = ReadWithLimit(big + "\n<record>b</record>", 50);
    ASSERT_EQ(records.size(), 2U);
    EXPECT_EQ(records[0].defect, RecordDefect::TooLong);
    EXPECT_EQ(records[0].raw, "");
    EXPECT_THAT(records[0].error, testing::HasSubstr("50 bytes"));
    EXPECT_EQ(records[1].raw, "<record>b</record>");
    EXPECT_EQ(records[1].line, 2U);
}

TEST(RecordCutter, SearchesTheEndOfASectionWithinTheLimitOnly) {
    std::string open = "<record><![CDATA[ x</record>";
    std::string filler = "<record>" + std::string(40, 'y') + "</record>";
    std::vector<Read> records = ReadWithLimit(open + filler + filler + "<record>]]></record>", 80);
    ASSERT_EQ(records.size(), 4U);
    EXPECT_EQ(records[0].raw, open);
    EXPECT_TRUE(records[0].openSection);
    EXPECT_EQ(records[1].raw, filler);
}

TEST(RecordCutter, ClosesASectionWithTheMarkThatWasTooFarForTheOneBefore) {
    const std::string open = "<record><![CDATA[ x</record>";
    constexpr std::size_t limit = 80;
    for (std::size_t size = 25; size < 50; ++size) {
        std::string second = "<record><![CDATA[" + std::string(size, 'y') + "]]></record>";
        bool reached = open.size() + second.find("]]>") + 3 <= limit;
        std::vector<Read> records = ReadWithLimit(open + second, limit);
        if (reached) {
            EXPECT_EQ(records.at(0).openSection, false) << size;
        } else {
            ASSERT_EQ(records.size(), 2U) << size;
            EXPECT_EQ(records[0].raw, open);
            EXPECT_EQ(records[1].raw, second);
            EXPECT_FALSE(records[1].openSection);
        }
    }
}

struct UnseenCase {
    const char* what;
    const char* text;
    std::vector<std::string> unseen;
};

class UnseenRecords : public testing::TestWithParam<UnseenCase> {};

TEST_P(UnseenRecords, AreReportedWithTheirLine) {
    EXPECT_EQ(Unseen(GetParam().text), GetParam().unseen);
}

const std::vector<UnseenCase> kUnseenCases = {
    {"WithAnAttribute", "<r>\n<record id=\"7\">a</record>", {"2: <record id=\"7\">"}},
    {"InCapitals", "\n\n<Record>a</Record>", {"3: <Record>"}},
    {"WithABlank", "<record >a</record>", {"1: <record >"}},
    {"WithoutContent", "<record/>", {"1: <record/>"}},
    {"WithAPrefix", "<x:record>a</x:record>", {"1: <x:record>"}},
    {"CutAtTheEnd", "<record", {"1: <record"}},
    {"InsideAComment",
     "<!-- \n<record>a</record>\n<record>b</record> -->",
     {"2: <record>", "3: <record>"}},
    {"OtherElementsAreNone", "<records><recorder><record-set><x>record</x></records>", {}},
    {"RecordsThatAreReadAreNone", "<record><record id='1'/><!-- <record> --></record>", {}},
};
INSTANTIATE_TEST_SUITE_P(Between, UnseenRecords, testing::ValuesIn(kUnseenCases),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(UnseenRecords, AreShownInExcerptWithoutCuttingACharacter) {
    std::string tag = "<record id=\"" + std::string(67, 'x') + "\xC3\xA4\">";
    EXPECT_THAT(Unseen(tag), ElementsAre("1: <record id=\"" + std::string(67, 'x')));
}

TEST(UnseenRecords, NeedNoHandler) {
    EXPECT_THAT(reading::ReadRecords("<record id='7'></record><!-- <record> -->"), IsEmpty());
}

}  // namespace
