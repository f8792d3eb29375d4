#include "tool/sources/json/plain_json.h"

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "rows_read.h"
#include "tool/sources/json/json_lines_reader.h"
#include "tool/sources/json/json_reader.h"

namespace tool {
namespace {

// A random JSON value, plain or not.
class RandomJson {
  public:
    explicit RandomJson(unsigned seed) : m_random(seed) {}

    std::size_t Below(std::size_t most) { return m_random() % most; }

    std::string Value(int depth = 0) {
        constexpr std::array<std::string_view, 14> scalars = {
            "true",  "false",
            "null",  "0",
            "-0",    "-7",
            "12.50", "1e2",
            "2E-3",  "-0.25",
            "\"\"",  "1234567890123456789012345678901234567890",
            "-0.0",  "18446744073709551615"};
        const std::size_t kind = Below(depth > 3 ? 6 : 10);
        if (kind < 3) {
            return std::string(scalars.at(Below(scalars.size())));
        }
        if (kind < 6) {
            return Text();
        }
        const bool isObject = kind < 8;
        std::string text = isObject ? "{" : "[";
        for (std::size_t i = Below(4); i > 0; --i) {
            text += Blank() + (isObject ? Text() + Blank() + ":" : "") + Value(depth + 1) +
                    Blank() + (i > 1 ? "," : "");
        }
        return text + (isObject ? "}" : "]");
    }

    // Changes a byte, or takes one out.
    void Garble(std::string& text) {
        constexpr std::string_view bytes = "{}[],:\"\\ 01-.eu\x80\xC3\xED\x01\t";
        const std::size_t at = Below(text.size());
        if (Below(3) == 0) {
            text.erase(at, 1);
        } else {
            text[at] = bytes[Below(bytes.size())];
        }
    }

  private:
    std::string Blank() { return Below(4) == 0 ? (Below(2) == 0 ? " " : "\t ") : ""; }

    std::string Text() {
        constexpr std::array<std::string_view, 16> parts = {"a",
                                                            "b",
                                                            "long enough for the heap ",
                                                            "\\n",
                                                            "\\\"",
                                                            "\\\\",
                                                            "\\/",
                                                            "\\t",
                                                            "\\b",
                                                            "\\u00e9",
                                                            "\xC3\xA9",
                                                            ",",
                                                            "\xF0\x9F\x98\x80",
                                                            "{",
                                                            "\\f",
                                                            "\\r"};
        std::string text = "\"";
        for (std::size_t i = Below(4); i > 0; --i) {
            text += parts.at(Below(parts.size()));
        }
        return text + '"';
    }

    std::mt19937 m_random;
};

bool IsPlain(std::string_view text) {
    Row row;
    RowBuilder builder({});
    builder.Begin(row);
    return ReadPlainJson(text, builder) && builder.IsComplete();
}

TEST(PlainJson, MeansTheSameAsTheParserOrLeavesItToThat) {
    int plain = 0;
    for (unsigned seed = 0; seed < 4000; ++seed) {
        RandomJson random(seed);
        std::string text = random.Value();
        if (seed % 2 == 0) {
            random.Garble(text);
        }
        SCOPED_TRACE(text);
        if (!IsPlain(text)) {
            continue;
        }
        ++plain;
        ASSERT_TRUE(nlohmann::json::accept(text));
        TextBytes line(text);
        JsonLinesReader lines(line);
        const std::string array = "[" + text + "]";
        TextBytes document(array);
        JsonReader reader(document);
        ASSERT_EQ(RowsRead(lines).Values(), RowsRead(reader).Values());
    }
    EXPECT_GT(plain, 1000);
}

// An array of which most elements are rows that can be read without the parser.
std::string RandomArray(RandomJson& random) {
    std::string text = "[";
    for (std::size_t i = 1 + random.Below(5); i > 0; --i) {
        text += random.Value(3) + (random.Below(4) == 0 ? " \n" : "") + (i > 1 ? "," : "");
        text += random.Below(4) == 0 ? "\n\t" : "";
    }
    return text + "]";
}

// All that a reader handed out, but for what the parser quotes of the text where that is wrong: it
// can quote only what it has read itself.
std::vector<RowsRead::Entry> EntriesOf(const RowsRead& read) {
    std::vector<RowsRead::Entry> entries = read.rows;
    for (RowsRead::Entry& entry : entries) {
        entry.error = entry.error.substr(0, entry.error.find("; last read: "));
    }
    return entries;
}

// With a chunk of one byte no element is there as a whole, so the parser reads everything.
TEST(PlainJson, MakesTheSameRowsOfAnArrayAsTheParser) {
    int rows = 0;
    for (unsigned seed = 0; seed < 3000; ++seed) {
        RandomJson random(seed);
        std::string text = RandomArray(random);
        if (seed % 2 == 0) {
            random.Garble(text);
        }
        SCOPED_TRACE(text);
        TextBytes bytes(text);
        JsonReader reader(bytes);
        const RowsRead read(reader);
        TextBytes sameBytes(text);
        JsonReader parser(sameBytes, std::nullopt, {}, 1);
        ASSERT_EQ(EntriesOf(read), EntriesOf(RowsRead(parser)));
        rows += static_cast<int>(read.rows.size());
    }
    EXPECT_GT(rows, 3000);
}

TEST(PlainJson, ReadsAheadToTheEndOfAValue) {
    const auto sizeOf = [](std::string_view text) {
        Row row;
        RowBuilder builder({});
        builder.Begin(row);
        return ReadPlainJsonAhead(text, builder);
    };
    EXPECT_EQ(sizeOf(R"({"a":[1]}, {)"), 9U);
    EXPECT_EQ(sizeOf(R"({"a":[1])"), 0U);
    EXPECT_EQ(sizeOf(R"({"a":"\u0041"})"), 0U);
}

TEST(PlainJson, ReadsWhatRowsMostlyAre) {
    EXPECT_TRUE(IsPlain(R"({"a":"x\ny","b":[1,-2.50,true,null],"c":{}, "d":"é"} )"));
}

TEST(PlainJson, LeavesWhatIsOddOrWrong) {
    for (const std::string_view text : {"", "{", "[1,]", "{\"a\"}", "\"\\u0041\"", "1e5", "01", "-",
                                        "1.", "nul", "1 2", "\"\xC3\"", "\"\x01\"", "\"\\x\"", "\"",
                                        "\xEF\xBB\xBF"
                                        "1"}) {
        EXPECT_FALSE(IsPlain(text)) << text;
    }
    EXPECT_FALSE(IsPlain(std::string(40, '[') + std::string(40, ']')));
}

}  // namespace
}  // namespace tool
