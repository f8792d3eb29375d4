#include "platform/core/adtext.h"

#include <gmock/gmock.h>

#include <limits>
#include <string>
#include <vector>

#include "tests/platform/items.h"
#include "tests/platform/printing.h"

namespace {

using testing::ElementsAre;

TEST(AdIsEmpty, TellsTextsWithoutUnits) {
    EXPECT_NE(AdIsEmpty(u""), 0);
    EXPECT_EQ(AdIsEmpty(u" "), 0);
}

TEST(AdIsEqual, RegardsCase) {
    EXPECT_NE(AdIsEqual(u"record", u"record"), 0);
    EXPECT_EQ(AdIsEqual(u"record", u"Record"), 0);
    EXPECT_EQ(AdIsEqual(u"record", u"records"), 0);
}

TEST(AdIsUnequal, IsTheOpposite) {
    EXPECT_EQ(AdIsUnequal(u"record", u"record"), 0);
    EXPECT_NE(AdIsUnequal(u"record", u"Record"), 0);
}

TEST(AdIsEqualNoCase, FoldsCase) {
    EXPECT_NE(AdIsEqualNoCase(u"stra\u00dfe", u"STRASSE"), 0);
    EXPECT_EQ(AdIsEqualNoCase(u"record", u"records"), 0);
}

struct Replacement {
    const char16_t* text;
    const char16_t* from;
    const char16_t* to;
    const char16_t* result;
};

TEST(AdReplaceString, ReplacesEachOccurrenceFromLeftToRight) {
    const Replacement cases[] = {
        {u"a&lt;b&lt;", u"&lt;", u"<", u"a<b<"},
        {u"none", u"&lt;", u"<", u"none"},
        {u"aaa", u"aa", u"b", u"ba"},
        {u"abab", u"ab", u"", u""},
        {u"abc", u"abc", u"abcabc", u"abcabc"},
        {u"&amp;lt;", u"&amp;", u"&", u"&lt;"},
        {u"&amp;amp;", u"&amp;", u"&", u"&amp;"},
        {u"a", u"", u"x", u"a"},
        {u"", u"a", u"x", u""},
        {u"caf\u00e9", u"\u00e9", u"e", u"cafe"},
    };
    for (const Replacement& replacement : cases) {
        Obx_String text(replacement.text);
        AdReplaceString(text, replacement.from, replacement.to);
        EXPECT_EQ(text, replacement.result) << Obx_String(replacement.text).ToUtf8();
    }
}

TEST(AdReplaceString, TakesTheTextItselfAsWhatToReplace) {
    Obx_String text(u"abc");
    AdReplaceString(text, text, u"x");
    EXPECT_EQ(text, u"x");
}

std::vector<std::string> Split(const char16_t* text, const char16_t* separator) {
    CStringArray parts;
    parts.Add(u"of the former text");
    AdSplitString(text, separator, parts);
    return Items(parts);
}

TEST(AdSplitString, GivesThePartsBetweenSeparators) {
    EXPECT_THAT(Split(u"a b c", u" "), ElementsAre("a", "b", "c"));
    EXPECT_THAT(Split(u"alone", u" "), ElementsAre("alone"));
    EXPECT_THAT(Split(u"a, b", u", "), ElementsAre("a", "b"));
}

TEST(AdSplitString, KeepsEmptyParts) {
    EXPECT_THAT(Split(u"a\t\tb", u"\t"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Split(u"\ta", u"\t"), ElementsAre("", "a"));
    EXPECT_THAT(Split(u"a\t", u"\t"), ElementsAre("a", ""));
    EXPECT_THAT(Split(u"\t", u"\t"), ElementsAre("", ""));
}

TEST(AdSplitString, GivesNoPartOfTheEmptyText) {
    EXPECT_THAT(Split(u"", u"\t"), ElementsAre());
}

TEST(AdSplitString, GivesTheWholeTextWhenThereIsNoSeparator) {
    EXPECT_THAT(Split(u"a b", u""), ElementsAre("a b"));
}

std::vector<std::string> Lines(const char16_t* text) {
    CStringArray lines;
    lines.Add(u"of the former text");
    AdSplitTextIntoLines(text, lines);
    return Items(lines);
}

TEST(AdSplitTextIntoLines, EndsALineAtEachKindOfLineEnd) {
    EXPECT_THAT(Lines(u"a\nb\r\nc\rd"), ElementsAre("a", "b", "c", "d"));
}

TEST(AdSplitTextIntoLines, KeepsEmptyLines) {
    EXPECT_THAT(Lines(u"a\n\nb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Lines(u"a\r\n\r\nb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Lines(u"a\r\rb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Lines(u"a\n\rb"), ElementsAre("a", "", "b"));
    EXPECT_THAT(Lines(u"\na"), ElementsAre("", "a"));
}

TEST(AdSplitTextIntoLines, AddsNoLineAfterTheLastLineEnd) {
    EXPECT_THAT(Lines(u"a\n"), ElementsAre("a"));
    EXPECT_THAT(Lines(u"a\r\n"), ElementsAre("a"));
    EXPECT_THAT(Lines(u"a\n\n"), ElementsAre("a", ""));
    EXPECT_THAT(Lines(u"\n"), ElementsAre(""));
}

TEST(AdSplitTextIntoLines, GivesNoLineOfTheEmptyText) {
    EXPECT_THAT(Lines(u""), ElementsAre());
}

TEST(AdBasename, GivesThePartAfterTheLastSeparator) {
    EXPECT_EQ(AdBasename(u"plan.pdf"), u"plan.pdf");
    EXPECT_EQ(AdBasename(u"SK-102/plan.pdf"), u"plan.pdf");
    EXPECT_EQ(AdBasename(u"C:\\files\\plan.pdf"), u"plan.pdf");
    EXPECT_EQ(AdBasename(u"a\\b/plan.pdf"), u"plan.pdf");
    EXPECT_EQ(AdBasename(u"a/b\\plan.pdf"), u"plan.pdf");
    EXPECT_EQ(AdBasename(u"folder/"), u"");
    EXPECT_EQ(AdBasename(u""), u"");
}

struct Number {
    const char16_t* text;
    long number;
};

TEST(AdStrToLong, ReadsTheNumberThatTheTextBeginsWith) {
    const Number cases[] = {
        {u"0", 0},      {u"33554440", 33554440}, {u"-7", -7}, {u"+7", 7},
        {u" \t12", 12}, {u"12abc", 12},          {u"007", 7}, {u"1 2", 1},
        {u"12.9", 12},  {u"\u00a05", 5},         {u"-0", 0},
    };
    for (const Number& number : cases) {
        EXPECT_EQ(AdStrToLong(number.text), number.number) << Obx_String(number.text).ToUtf8();
    }
}

TEST(AdStrToLong, GivesZeroWhereNoNumberStands) {
    for (const char16_t* text :
         {u"", u" ", u"abc", u"-", u"+", u"- 1", u"--1", u"+-1", u".5", u"\u0661"}) {
        EXPECT_EQ(AdStrToLong(text), 0) << Obx_String(text).ToUtf8();
    }
}

TEST(AdStrToLong, StopsAtTheEndsOfTheRange) {
    const long lowest = std::numeric_limits<long>::min();
    const long highest = std::numeric_limits<long>::max();
    const Number cases[] = {
        {u"9223372036854775806", highest - 1}, {u"9223372036854775807", highest},
        {u"9223372036854775808", highest},     {u"99999999999999999999999", highest},
        {u"-9223372036854775807", lowest + 1}, {u"-9223372036854775808", lowest},
        {u"-9223372036854775809", lowest},     {u"-99999999999999999999999", lowest},
    };
    for (const Number& number : cases) {
        EXPECT_EQ(AdStrToLong(number.text), number.number) << Obx_String(number.text).ToUtf8();
    }
}

}  // namespace
