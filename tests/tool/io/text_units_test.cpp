#include "tool/io/text_units.h"

#include <gtest/gtest.h>
#include <unicode/ustring.h>
#include <unicode/utf8.h>

#include <random>
#include <string>
#include <vector>

#include "tool/io/decoding_marks.h"

namespace {

using namespace std::string_literals;

std::string Encode(UChar32 code) {
    std::uint8_t bytes[U8_MAX_LENGTH];
    std::int32_t length = 0;
    U8_APPEND_UNSAFE(bytes, length, code);
    return {reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length)};
}

// The text with marks after it was checked as a whole.
std::string Checked(std::string text) {
    bool marked = false;
    std::size_t done = tool::MarkInvalidUtf8(text.data(), text.size(), true, marked);
    EXPECT_EQ(done, text.size());
    EXPECT_EQ(marked, tool::FindDecodingMark(text) != std::string::npos);
    return text;
}

bool IsValidForIcu(const std::string& text) {
    UErrorCode status = U_ZERO_ERROR;
    std::int32_t length = 0;
    std::vector<UChar> units(text.size() + 1);
    u_strFromUTF8(units.data(), static_cast<std::int32_t>(units.size()), &length, text.data(),
                  static_cast<std::int32_t>(text.size()), &status);
    return U_SUCCESS(status) && text.find('\0') == std::string::npos;
}

TEST(MarkInvalidUtf8, LeavesEveryCharacterAsItIs) {
    std::string all;
    for (UChar32 code = 1; code <= 0x10FFFF; ++code) {
        if (!U_IS_SURROGATE(code)) {
            all += Encode(code);
        }
    }
    EXPECT_EQ(Checked(all), all);
}

struct InvalidCase {
    const char* what;
    std::string bytes;
    std::string marked;  // '!' stands for a byte mark, '0' for a NUL mark
};

class InvalidUtf8 : public testing::TestWithParam<InvalidCase> {};

TEST_P(InvalidUtf8, IsMarkedByteByByte) {
    std::string shown = Checked("a" + GetParam().bytes + "b");
    for (char& c : shown) {
        auto byte = static_cast<unsigned char>(c);
        c = byte == tool::ByteMark ? '!' : byte == tool::NulMark ? '0' : c;
    }
    EXPECT_EQ(shown, "a" + GetParam().marked + "b");
}

const std::vector<InvalidCase> kInvalidCases = {
    {"Nul", "\0"s, "0"},
    {"LoneContinuation", "\x80", "!"},
    {"OverlongSlash", "\xC0\xAF", "!!"},
    {"OverlongThreeBytes", "\xE0\x80\xAF", "!!!"},
    {"OverlongFourBytes", "\xF0\x80\x80\xAF", "!!!!"},
    {"OverlongNul", "\xC0\x80", "!!"},
    {"EncodedSurrogate", "\xED\xA0\x80", "!!!"},
    {"BeyondUnicode", "\xF4\x90\x80\x80", "!!!!"},
    {"FiveByteLead", "\xF8\x88\x80\x80\x80", "!!!!!"},
    {"NeverABytes", "\xFE\xFF", "!!"},
    {"SequenceCutByText", "\xE2\x82x", "!!x"},
    {"SequenceCutBySequence", "\xE2\xC3\xA4", "!\xC3\xA4"},
    {"Latin1", "sch\xF6n", "sch!n"},
};
INSTANTIATE_TEST_SUITE_P(Of, InvalidUtf8, testing::ValuesIn(kInvalidCases),
                         [](const auto& info) { return std::string(info.param.what); });

TEST(MarkInvalidUtf8, KeepsAnIncompleteSequenceForTheNextPiece) {
    const std::string euro = "\xE2\x82\xAC";
    for (std::size_t size = 1; size < euro.size(); ++size) {
        std::string text = "ab" + euro.substr(0, size);
        bool marked = false;
        EXPECT_EQ(tool::MarkInvalidUtf8(text.data(), text.size(), false, marked), 2U);
        EXPECT_FALSE(marked);
    }
}

TEST(MarkInvalidUtf8, MarksAnIncompleteSequenceAtTheEnd) {
    EXPECT_EQ(Checked("ab\xE2\x82"), "ab\xF9\xF9");
}

TEST(MarkInvalidUtf8, AgreesWithAnotherDecoderOnRandomBytes) {
    unsigned seed = std::random_device()();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    // Mostly bytes near the borders of the rules, so that valid sequences do occur.
    const std::string pool =
        "\0ab\x7F\x80\x8F\x90\x9F\xA0\xBF\xC1\xC2\xDF\xE0\xE2\xED\xF0\xF4\xF5\xFF"s;
    for (int round = 0; round < 20000; ++round) {
        std::string text(random() % 80, 'x');
        for (char& c : text) {
            if (random() % 8 == 0) {
                c = pool[random() % pool.size()];
            }
        }
        ASSERT_EQ(Checked(text) == text, IsValidForIcu(text));
    }
}

TEST(MarkInvalidUtf8, FindsANulAtEveryPlaceOfALongText) {
    for (std::size_t at = 0; at < 100; ++at) {
        std::string text(100, 'x');
        text[at] = '\0';
        EXPECT_EQ(tool::FindDecodingMark(Checked(text)), at);
    }
}

std::string DecodedUtf16(std::string_view bytes, bool last = true) {
    std::string text;
    bool marked = false;
    std::size_t used = tool::AppendUtf16(bytes, true, last, text, marked);
    EXPECT_EQ(used, last ? bytes.size() : used);
    EXPECT_EQ(marked, tool::FindDecodingMark(text) != std::string::npos);
    return text;
}

TEST(AppendUtf16, DecodesEveryCharacterInBothByteOrders) {
    std::string expected;
    std::string little;
    std::string big;
    for (UChar32 code = 1; code <= 0x10FFFF; code += code < 0xFFFF ? 1 : 37) {
        if (U_IS_SURROGATE(code)) {
            continue;
        }
        expected += Encode(code);
        UChar units[2] = {U16_LEAD(code), U16_TRAIL(code)};
        if (code < 0x10000) {
            units[0] = static_cast<UChar>(code);
        }
        for (int i = 0; i < U16_LENGTH(code); ++i) {
            auto high = static_cast<char>(units[i] >> 8);
            auto low = static_cast<char>(units[i] & 0xFF);
            big += {high, low};
            little += {low, high};
        }
    }
    bool marked = false;
    std::string fromLittle;
    tool::AppendUtf16(little, false, true, fromLittle, marked);
    EXPECT_TRUE(fromLittle == expected);
    EXPECT_TRUE(DecodedUtf16(big) == expected);
    EXPECT_FALSE(marked);
    EXPECT_EQ(tool::CountUtf16Units(expected), big.size() / 2);
}

TEST(AppendUtf16, MarksWhatIsNoText) {
    EXPECT_EQ(DecodedUtf16("\0a\xD8\x00\0b"s), "a\xFA\x62");
    EXPECT_EQ(DecodedUtf16("\0a\xDC\x00\0b"s), "a\xFA\x62");
    EXPECT_EQ(DecodedUtf16("\xD8\x00\xD8\x00\xDC\x00"s), "\xFA\xF0\x90\x80\x80");
    EXPECT_EQ(DecodedUtf16("\0\0\0b"s), "\xF8\x62");
    EXPECT_EQ(DecodedUtf16("\0a\xD8\x00"s), "a\xFA");
    EXPECT_EQ(DecodedUtf16("\0a\0"s), "a\xFB");
}

TEST(AppendUtf16, KeepsWhatIsIncompleteForTheNextPiece) {
    std::string text;
    bool marked = false;
    EXPECT_EQ(tool::AppendUtf16("\0a\0"s, true, false, text, marked), 2U);
    EXPECT_EQ(tool::AppendUtf16("\xD8\x00"s, true, false, text, marked), 0U);
    EXPECT_EQ(tool::AppendUtf16("\xD8\x00\xDC"s, true, false, text, marked), 0U);
    EXPECT_EQ(text, "a");
    EXPECT_FALSE(marked);
}

TEST(CountUtf16Units, CountsAMarkAsOne) {
    EXPECT_EQ(tool::CountUtf16Units("a\xFA\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80"), 6U);
}

TEST(CountLineEnds, CountsInTextsOfAnyLength) {
    EXPECT_EQ(tool::CountLineEnds(""), 0U);
    EXPECT_EQ(tool::CountLineEnds("a\r\nb\n"), 2U);
    EXPECT_EQ(tool::CountLineEnds(std::string(1000, '\n')), 1000U);
}

}  // namespace
