#include "tool/sources/csv/csv_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "rows_read.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using namespace std::string_view_literals;

RowsRead ReadCsv(std::string_view text, CsvFormat format = {}, RowLimits limits = {},
                 std::size_t chunk = 65536) {
    TextBytes bytes(text);
    CsvReader reader(bytes, std::move(format), limits, chunk);
    return RowsRead(reader);
}

std::string ErrorOf(std::string_view text, CsvFormat format = {}) {
    try {
        ReadCsv(text, std::move(format));
    } catch (const SourceError& error) {
        return error.what();
    }
    return "no error";
}

TEST(CsvReader, NamesCellsByTheHeader) {
    const RowsRead read = ReadCsv("Nr,Title\r\n1,one\r\n2,\r\n");
    EXPECT_THAT(read.header, ElementsAre("Nr", "Title"));
    EXPECT_THAT(read.Values(), ElementsAre(R"({Nr:"1",Title:"one"})", R"({Nr:"2",Title:""})"));
}

TEST(CsvReader, TakesALastLineWithoutAnEnd) {
    EXPECT_THAT(ReadCsv("a\n1").Values(), ElementsAre(R"({a:"1"})"));
    EXPECT_THAT(ReadCsv("a\n\"1\"").Values(), ElementsAre(R"({a:"1"})"));
}

TEST(CsvReader, ReadsSeparatorsQuotesAndLineEndsInQuotes) {
    const RowsRead read = ReadCsv("a,b\n\"1,\"\"x\"\"\r\ny\",\"\"\n2,3\n");
    EXPECT_THAT(read.Values(), ElementsAre("{a:\"1,\"x\"\r\ny\",b:\"\"}", R"({a:"2",b:"3"})"));
    EXPECT_EQ(read.rows[0].line, 2U);
    EXPECT_EQ(read.rows[0].raw, "\"1,\"\"x\"\"\r\ny\",\"\"");
    EXPECT_EQ(read.rows[1].line, 4U);
    EXPECT_EQ(read.rows[1].number, 2U);
}

TEST(CsvReader, KeepsBlanksLoneCarriageReturnsAndInnerQuotes) {
    EXPECT_THAT(ReadCsv("a,b\n 1 ,5\" disk\rx\n").Values(),
                ElementsAre("{a:\" 1 \",b:\"5\" disk\rx\"}"));
}

TEST(CsvReader, TakesOtherSeparatorsAndQuotes) {
    CsvFormat format;
    format.separator = ';';
    format.quote = '\'';
    EXPECT_THAT(ReadCsv("a;b\n'1;2';\"3\"\n", format).Values(),
                ElementsAre("{a:\"1;2\",b:\"\"3\"\"}"));
    format.quote = CsvFormat::kNoQuote;
    EXPECT_THAT(ReadCsv("a;b\n'1;2'\n", format).Values(), ElementsAre(R"({a:"'1",b:"2'"})"));
}

TEST(CsvReader, TakesAGivenHeader) {
    CsvFormat format;
    format.header = {"x", "y"};
    EXPECT_THAT(ReadCsv("1,2\n", format).Values(), ElementsAre(R"({x:"1",y:"2"})"));
}

TEST(CsvReader, KeepsColumnsOfOneNameApartByTheirPlaces) {
    EXPECT_THAT(ReadCsv("a,a\n1,2\n").Values(), ElementsAre(R"({a:"1",a:"2"})"));
}

TEST(CsvReader, PassesOverEmptyLinesUnlessTheyAreRowsOfOneColumn) {
    EXPECT_THAT(ReadCsv("\n\r\na,b\n\n1,2\n\r\n").Values(), ElementsAre(R"({a:"1",b:"2"})"));
    EXPECT_THAT(ReadCsv("a\n\n1\n").Values(), ElementsAre(R"({a:""})", R"({a:"1"})"));
}

TEST(CsvReader, PassesOverEmptyLinesAtTheEndWhateverTheChunksAre) {
    for (std::size_t lines = 0; lines < 12; ++lines) {
        for (std::size_t chunk = 1; chunk < 24; ++chunk) {
            EXPECT_THAT(ReadCsv("a,b\n1,2\n" + std::string(lines, '\n'), {}, {}, chunk).Values(),
                        ElementsAre(R"({a:"1",b:"2"})"))
                << lines << ' ' << chunk;
        }
    }
}

TEST(CsvReader, SaysHowManyCellsARaggedRowHas) {
    const RowsRead read = ReadCsv("a,b\n1\n2,3,4\n5,6\n");
    EXPECT_THAT(read.Values(),
                ElementsAre("it has 1 cell, and the header has 2",
                            "it has 3 cells, and the header has 2", R"({a:"5",b:"6"})"));
    EXPECT_EQ(read.rows[1].raw, "2,3,4");
}

TEST(CsvReader, LosesOnlyItsLineToAQuoteThatDoesNotClose) {
    const RowsRead read = ReadCsv("a,b\n1,\"x\n2,y\n3,z\n");
    EXPECT_THAT(read.Values(), ElementsAre("a quote opens and does not close", R"({a:"2",b:"y"})",
                                           R"({a:"3",b:"z"})"));
    EXPECT_EQ(read.rows[0].raw, "1,\"x");
    EXPECT_EQ(read.rows[2].line, 4U);
}

TEST(CsvReader, SaysWhereTextFollowsAQuote) {
    EXPECT_THAT(ReadCsv("a,b\n1,\"x\ny\"z\n2,3\n").Values(),
                ElementsAre("a quote closes and text follows it; a quote in a quoted cell must be "
                            "doubled (line 3)",
                            "it has 1 cell, and the header has 2", R"({a:"2",b:"3"})"));
}

TEST(CsvReader, SaysWhichRowHoldsABadByte) {
    const RowsRead read = ReadCsv("a,b\n1,x\n2,\"\n\xE9t\xE9\"\n3,z\n");
    EXPECT_THAT(read.Values(), ElementsAre(R"({a:"1",b:"x"})",
                                           "it holds a byte that is no character, and the file is "
                                           "read as UTF-8 (line 4)",
                                           R"({a:"3",b:"z"})"));
    EXPECT_EQ(read.rows[1].raw, "2,\"\n\xEF\xBF\xBDt\xEF\xBF\xBD\"");
}

TEST(CsvReader, ReplacesNulAndCountsIt) {
    const RowsRead read = ReadCsv("a,b\nx\0y,\0\n1,2\n"sv);
    EXPECT_THAT(read.Values(),
                ElementsAre("{a:\"x\xEF\xBF\xBDy\",b:\"\xEF\xBF\xBD\"}", R"({a:"1",b:"2"})"));
    EXPECT_EQ(read.rows[0].nuls, 2U);
    EXPECT_EQ(read.rows[1].nuls, 0U);
}

TEST(CsvReader, ReadsOtherEncodings) {
    CsvFormat format;
    format.charset = "windows-1252";
    EXPECT_THAT(ReadCsv("K\xF6\n\x80\x84\n", format).Values(), ElementsAre("{Kö:\"€„\"}"));
}

TEST(CsvReader, BelievesAByteOrderMarkMoreThanTheGivenEncoding) {
    CsvFormat format;
    format.charset = "windows-1252";
    EXPECT_THAT(ReadCsv("\xEF\xBB\xBFK\xC3\xB6\n1\n", format).Values(), ElementsAre("{Kö:\"1\"}"));
    EXPECT_THAT(ReadCsv("\xFF\xFE\xF6\0\n\0001\0\n\0"sv, format).Values(),
                ElementsAre("{ö:\"1\"}"));
}

TEST(CsvReader, MarksBytesThatAnotherEncodingDoesNotHave) {
    CsvFormat format;
    format.charset = "Shift_JIS";
    EXPECT_THAT(ReadCsv("a\n\xA0\x01\n1\n", format).Values()[1], R"({a:"1"})");
    EXPECT_THAT(ReadCsv("a\n\xA0\x01\n1\n", format).Values()[0], HasSubstr("Shift_JIS"));
}

TEST(CsvReader, RefusesAnEncodingThatIsNone) {
    CsvFormat format;
    format.charset = "windows-7";
    EXPECT_THAT(ErrorOf("a\n", format), HasSubstr("no encoding called \"windows-7\""));
}

TEST(CsvReader, RefusesAFileWithoutAHeader) {
    EXPECT_THAT(ErrorOf(""), HasSubstr("the file is empty"));
    EXPECT_THAT(ErrorOf("\xEF\xBB\xBF\n"), HasSubstr("the file is empty"));
    EXPECT_THAT(ErrorOf("\"a\n"), HasSubstr("its header (line 1) cannot be read: a quote opens"));
    EXPECT_THAT(ErrorOf("\xE9\n1\n"), HasSubstr("its header (line 1) cannot be read: a byte"));
}

TEST(CsvReader, StepsOverARowThatIsTooLong) {
    const std::string text =
        "a,b\n1," + std::string(500, 'x') + "\n2,\"" + std::string(500, 'y') + "\n3,z\n";
    const RowsRead read = ReadCsv(text, {}, {.size = 100, .depth = 9}, 16);
    EXPECT_THAT(read.Values(),
                ElementsAre("the row is not shorter than 100 bytes",
                            "the row is not shorter than 100 bytes", R"({a:"3",b:"z"})"));
    EXPECT_EQ(read.rows[2].line, 4U);
    EXPECT_EQ(read.rows[0].raw, "");
}

TEST(CsvReader, ReadsTheSameInChunksOfAnySize) {
    const std::string text = "a,b\r\n\"x\"\"y\r\nz\",\xC3\xB6\r\n\r\n1,\"2\"\r\n\"q\n";
    const RowsRead whole = ReadCsv(text);
    ASSERT_THAT(whole.rows, SizeIs(3));
    for (std::size_t chunk = 1; chunk < 12; ++chunk) {
        EXPECT_EQ(ReadCsv(text, {}, {}, chunk).Values(), whole.Values()) << chunk;
    }
}

}  // namespace
}  // namespace tool
