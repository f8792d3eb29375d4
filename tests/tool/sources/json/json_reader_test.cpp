#include "tool/sources/json/json_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>

#include "rows_read.h"
#include "tool/sources/json/json_lines_reader.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;
using namespace std::string_view_literals;

RowsRead ReadJson(std::string_view text, std::optional<JsonReader::Path> rows = std::nullopt,
                  RowLimits limits = {}, std::size_t chunk = 65536) {
    TextBytes bytes(text);
    JsonReader reader(bytes, std::move(rows), limits, chunk);
    return RowsRead(reader);
}

RowsRead ReadLines(std::string_view text, RowLimits limits = {}, std::size_t chunk = 65536) {
    TextBytes bytes(text);
    JsonLinesReader reader(bytes, limits, chunk);
    return RowsRead(reader);
}

std::string Nested(std::size_t depth) {
    return std::string(depth, '[') + std::string(depth, ']');
}

TEST(JsonReader, TakesTheElementsOfAnArrayAsRows) {
    const RowsRead read = ReadJson("[{\"a\":1},\n {\"a\": [null, \"x\"]}, 3, \"y\"]");
    EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1"})", R"({a:[null,"x"]})", R"("3")", R"("y")"));
    EXPECT_EQ(read.rows[1].raw, "{\"a\": [null, \"x\"]}");
    EXPECT_EQ(read.rows[1].number, 2U);
    EXPECT_EQ(read.rows[1].line, 2U);
    EXPECT_EQ(read.rows[3].raw, "\"y\"");
}

TEST(JsonReader, TakesAnyOtherDocumentAsOneRow) {
    EXPECT_THAT(ReadJson(" {\"a\": {\"b\": true}}\n").Values(), ElementsAre(R"({a:{b:"true"}})"));
    EXPECT_THAT(ReadJson("1").Values(), ElementsAre(R"("1")"));
}

TEST(JsonReader, FindsTheRowsAtAnAddressAndTellsOfValuesOutside) {
    const RowsRead read = ReadJson(
        "{\"total\": 2, \"pages\": [{\"rows\": [{\"a\":1}]},\n{\"rows\": [2], \"next\": \"x\"}]}",
        JsonReader::Path{"pages", "*", "rows"});
    EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1"})", R"("2")"));
    EXPECT_THAT(read.outside, ElementsAre("/total in line 1", "/pages/*/next in line 2"));
}

TEST(JsonReader, KeepsNumbersAsTheyAreWritten) {
    EXPECT_THAT(
        ReadJson("[1.10, 1E2, 1e999, -0, 0, -7, 18446744073709551615, "
                 "1234567890123456789012345678901234567890]")
            .Values(),
        ElementsAre(R"("1.10")", R"("1E2")", R"("1e999")", R"("-0")", R"("0")", R"("-7")",
                    R"("18446744073709551615")", R"("1234567890123456789012345678901234567890")"));
}

TEST(JsonReader, KeepsTheLastOfMembersOfOneNameAndCountsTheOthers) {
    const RowsRead read = ReadJson(R"([{"a":1,"b":2,"a":3,"c":{"d":1,"d":2}}])");
    EXPECT_THAT(read.Values(), ElementsAre(R"({b:"2",a:"3",c:{d:"2"}})"));
    EXPECT_EQ(read.rows[0].repeated, 2U);
    EXPECT_EQ(read.rows[0].repeatedName, "a");
}

TEST(JsonReader, ReplacesNulAndCountsIt) {
    const RowsRead read = ReadJson(R"([{"a\u0000":"x\u0000y"}])");
    EXPECT_THAT(read.Values(), ElementsAre("{a\xEF\xBF\xBD:\"x\xEF\xBF\xBDy\"}"));
    EXPECT_EQ(read.rows[0].nuls, 2U);
}

TEST(JsonReader, SaysThatNothingBehindABreakIsRead) {
    const RowsRead read = ReadJson("[{\"a\":1},\n{\"a\":2,\n");
    ASSERT_THAT(read.rows, SizeIs(2));
    EXPECT_THAT(read.rows[1].error, StartsWith("the file stops being valid JSON in line 3, at byte "
                                               "18, and nothing behind that has been read: "));
    EXPECT_THAT(read.rows[1].raw, StartsWith("{\"a\":2,"));
    EXPECT_TRUE(read.rows[1].isLast);
    EXPECT_FALSE(read.rows[0].isLast);
}

TEST(JsonReader, SaysThatNothingBehindANulIsRead) {
    for (const std::string_view rest : {"\0"sv, "\0 "sv, "\0[{\"a\":2}]"sv, " \n\0x"sv}) {
        const RowsRead read = ReadJson("[{\"a\":1}]" + std::string(rest));
        EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1"})", HasSubstr("a NUL character"))) << rest;
        EXPECT_TRUE(read.rows.back().isLast);
    }
    EXPECT_THAT(ReadJson("12\0"sv).Values(), ElementsAre("\"12\"", HasSubstr("a NUL character")));
    EXPECT_THAT(ReadJson("[1,\0 2]"sv).Values(),
                ElementsAre("\"1\"", HasSubstr("stops being valid JSON")));
}

TEST(JsonReader, QuotesNoHalvesOfCharacters) {
    EXPECT_THAT(ReadJson("{\"a\"\xC3\xA9:1}").rows.at(0).error,
                HasSubstr("last read: '\"a\"\xEF\xBF\xBD'"));
}

TEST(JsonReader, SaysWhatALoneSurrogateCosts) {
    const RowsRead read = ReadJson(R"([{"a":1},{"a":"\ud800"},{"a":3}])");
    ASSERT_THAT(read.rows, SizeIs(2));
    EXPECT_THAT(read.rows[1].error, HasSubstr("surrogate"));
    EXPECT_TRUE(read.rows[1].isLast);
}

TEST(JsonReader, RejectsAnElementThatIsNestedTooDeepAndGoesOn) {
    const RowsRead read = ReadJson("[" + Nested(10000) + ",7]");
    EXPECT_THAT(read.Values(),
                ElementsAre("its values are nested deeper than 256, the most that --max-depth "
                            "allows",
                            R"("7")"));
    EXPECT_THAT(ReadJson("[" + Nested(256) + "]").rows[0].error, "");
}

TEST(JsonReader, GivesUpValuesAroundTheRowsThatAreNestedTooDeep) {
    const RowsRead read = ReadJson("{\"a\":" + Nested(300) + "}", JsonReader::Path{"rows"},
                                   {.size = 900, .depth = 9});
    ASSERT_THAT(read.rows, SizeIs(1));
    EXPECT_THAT(read.rows[0].error, HasSubstr("its values are nested deeper than 9"));
    EXPECT_TRUE(read.rows[0].isLast);
}

TEST(JsonReader, DropsAnyNumberOfRepeatedMembersInOnePass) {
    std::string text = "[{";
    for (int i = 0; i < 20000; ++i) {
        text += "\"a\":1,\"b\":2,";
    }
    const RowsRead read = ReadJson(text + "\"c\":3}]");
    EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1",b:"2",c:"3"})"));
    EXPECT_EQ(read.rows[0].repeated, 39998U);
}

TEST(JsonReader, RejectsAnElementThatIsTooLargeAndGoesOn) {
    const std::string text =
        "[{\"a\":\"" + std::string(60, 'x') + "\",\"b\":\"" + std::string(60, 'y') + "\"},7]";
    const RowsRead read = ReadJson(text, std::nullopt, {.size = 100, .depth = 9}, 8);
    EXPECT_THAT(read.Values(), ElementsAre("it is not shorter than 100 bytes", R"("7")"));
    EXPECT_EQ(read.rows[0].raw, "");
}

TEST(JsonReader, GivesUpATextThatIsTooLarge) {
    const RowsRead read =
        ReadJson("[1,\"" + std::string(500, 'x') + "\"]", std::nullopt, {.size = 100, .depth = 9});
    ASSERT_THAT(read.rows, SizeIs(2));
    EXPECT_THAT(read.rows[1].error, HasSubstr("a text is not shorter than 100 bytes"));
    EXPECT_TRUE(read.rows[1].isLast);
}

TEST(JsonReader, ReadsTheSameInChunksOfAnySize) {
    const std::string text = "[{\"a\": \"\xC3\xB6\\u00e9\", \"b\": [1.50, {}]},\n[], \"x\"]";
    const RowsRead whole = ReadJson(text);
    for (std::size_t chunk = 1; chunk < 12; ++chunk) {
        const RowsRead read = ReadJson(text, std::nullopt, {}, chunk);
        EXPECT_EQ(read.Values(), whole.Values()) << chunk;
        EXPECT_EQ(read.rows[0].raw, whole.rows[0].raw) << chunk;
    }
}

TEST(JsonReader, TakesAnEmptyFileAsBroken) {
    const RowsRead read = ReadJson("");
    ASSERT_THAT(read.rows, SizeIs(1));
    EXPECT_TRUE(read.rows[0].isLast);
}

TEST(JsonLinesReader, TakesEachLineAsARow) {
    const RowsRead read = ReadLines("\xEF\xBB\xBF{\"a\":1}\r\n\n  \n[2]\n\"x\"");
    EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1"})", R"(["2"])", R"("x")"));
    EXPECT_EQ(read.rows[0].raw, "{\"a\":1}");
    EXPECT_EQ(read.rows[1].line, 4U);
    EXPECT_EQ(read.rows[1].number, 2U);
}

TEST(JsonLinesReader, LosesOnlyItsLineToWhatIsNoJson) {
    const RowsRead read = ReadLines("{\"a\":\n{\"a\":\"\\udc00\"}\n{\"a\":\"\xE9\"}\n{} {}\n3\n");
    ASSERT_THAT(read.rows, SizeIs(5));
    EXPECT_THAT(read.rows[0].error, StartsWith("it is not valid JSON: "));
    EXPECT_THAT(read.rows[1].error, HasSubstr("surrogate"));
    EXPECT_THAT(read.rows[2].error, HasSubstr("UTF-8"));
    EXPECT_EQ(read.rows[2].raw, "{\"a\":\"\xEF\xBF\xBD\"}");
    EXPECT_THAT(read.rows[3].error, StartsWith("it is not valid JSON: "));
    EXPECT_EQ(read.rows[4].error, "");
    EXPECT_FALSE(read.rows[0].isLast);
}

TEST(JsonLinesReader, LosesNothingBehindANulWithoutAWord) {
    const RowsRead read = ReadLines("{\"a\":1}\0{\"a\":2}\n12\0\xFF\n{\"a\":3}\n"sv);
    EXPECT_THAT(read.Values(), ElementsAre(HasSubstr("a NUL character"),
                                           HasSubstr("a NUL character"), R"({a:"3"})"));
    EXPECT_EQ(read.rows[1].raw, "12\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(JsonLinesReader, StepsOverALineThatIsTooLong) {
    const RowsRead read =
        ReadLines("\"" + std::string(500, 'x') + "\"\n2\n", {.size = 100, .depth = 9}, 16);
    EXPECT_THAT(read.Values(), ElementsAre("the line is not shorter than 100 bytes", R"("2")"));
    EXPECT_EQ(read.rows[1].line, 2U);
}

}  // namespace
}  // namespace tool
