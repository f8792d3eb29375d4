#include "platform/foundation/utf.h"

#include <gtest/gtest.h>

namespace {

struct Pair {
    const char* name;
    std::u16string utf16;
    std::string utf8;
};

std::vector<Pair> ValidTexts() {
    return {
        {"empty", u"", ""},
        {"ascii of one word", u"12345678", "12345678"},
        {"ascii of all lengths around a word", u"123456789", "123456789"},
        {"a zero unit", std::u16string(u"a\0b", 3), std::string("a\0b", 3)},
        {"two bytes", u"\u00e9", "\xc3\xa9"},
        {"three bytes", u"\u20ac", "\xe2\x82\xac"},
        {"four bytes", u"\U0001F6A2", "\xf0\x9f\x9a\xa2"},
        {"the last character", u"\U0010FFFF", "\xf4\x8f\xbf\xbf"},
        {"beyond ascii at each place of a word", u"abc\u00e9defgh\u00e9",
         "abc\xc3\xa9"
         "defgh\xc3\xa9"},
        {"a byte order mark is a character", u"\uFEFFx", "\xef\xbb\xbfx"},
    };
}

TEST(Utf, ValidTextsConvertBothWays) {
    for (const Pair& text : ValidTexts()) {
        std::string utf8 = "former content";
        EXPECT_EQ(Utf16ToUtf8(text.utf16, utf8), std::nullopt) << text.name;
        EXPECT_EQ(utf8, text.utf8) << text.name;
        std::u16string utf16 = u"former content";
        EXPECT_EQ(Utf8ToUtf16(text.utf8, utf16), std::nullopt) << text.name;
        EXPECT_EQ(utf16, text.utf16) << text.name;
    }
}

TEST(Utf, LossyFormsKeepValidTexts) {
    for (const Pair& text : ValidTexts()) {
        EXPECT_EQ(Utf16ToUtf8Lossy(text.utf16), text.utf8) << text.name;
        EXPECT_EQ(Utf8ToUtf16Lossy(text.utf8), text.utf16) << text.name;
    }
}

// ASCII is copied in blocks, of which the last may overlap the one before.
TEST(Utf, TextsOfAllLengthsConvertWithACharacterBeyondAsciiAnywhere) {
    for (std::size_t length = 1; length < 30; ++length) {
        for (std::size_t place = 0; place <= length; ++place) {
            std::u16string units;
            std::string bytes;
            for (std::size_t i = 0; i < length; ++i) {
                units += i == place ? u'\u20ac' : static_cast<char16_t>(u'a' + i % 26);
                bytes += i == place ? "\xe2\x82\xac" : std::string(1, static_cast<char>(units[i]));
            }
            std::string utf8;
            EXPECT_EQ(Utf16ToUtf8(units, utf8), std::nullopt);
            EXPECT_EQ(utf8, bytes);
            EXPECT_EQ(Utf16ToUtf8(reinterpret_cast<const unsigned short*>(units.c_str()), utf8),
                      std::nullopt);
            EXPECT_EQ(utf8, bytes);
            std::u16string utf16;
            EXPECT_EQ(Utf8ToUtf16(bytes, utf16), std::nullopt);
            EXPECT_EQ(utf16, units);
        }
    }
}

TEST(Utf, ATextOfUnitsEndsAtItsZero) {
    constexpr unsigned short units[] = {'a', 'b', 0, 'c', 0};
    std::string utf8 = "former content";
    EXPECT_EQ(Utf16ToUtf8(units, utf8), std::nullopt);
    EXPECT_EQ(utf8, "ab");
    EXPECT_EQ(Utf16ToUtf8(static_cast<const unsigned short*>(nullptr), utf8), std::nullopt);
    EXPECT_EQ(utf8, "");
}

TEST(Utf, AnUnpairedSurrogateInATextOfUnitsHasAPosition) {
    constexpr unsigned short units[] = {'a', 0xD83D, 'b', 0};
    std::string utf8;
    EXPECT_EQ(Utf16ToUtf8(units, utf8), 1U);
}

struct InvalidUtf16 {
    const char* name;
    std::u16string text;
    std::size_t position;
    std::string lossy;
};

TEST(Utf, InvalidUtf16IsRefusedWithItsPosition) {
    const InvalidUtf16 cases[] = {
        {"lone high surrogate", {0xD83D}, 0, "\xef\xbf\xbd"},
        {"lone low surrogate", {0xDEA2}, 0, "\xef\xbf\xbd"},
        {"high surrogate at the end", {u'a', u'b', 0xD83D}, 2, "ab\xef\xbf\xbd"},
        {"high surrogate before a letter",
         {u'a', 0xD83D, u'b'},
         1,
         "a\xef\xbf\xbd"
         "b"},
        {"two high surrogates", {0xD83D, 0xD83D, 0xDEA2}, 0, "\xef\xbf\xbd\xf0\x9f\x9a\xa2"},
        {"surrogates in the wrong order", {0xDEA2, 0xD83D}, 0, "\xef\xbf\xbd\xef\xbf\xbd"},
        {"after a valid pair", {0xD83D, 0xDEA2, 0xDEA2}, 2, "\xf0\x9f\x9a\xa2\xef\xbf\xbd"},
        {"after much ascii",
         {u'0', u'1', u'2', u'3', u'4', u'5', u'6', u'7', u'8', u'9', 0xDC00},
         10,
         "0123456789\xef\xbf\xbd"},
    };
    for (const InvalidUtf16& invalid : cases) {
        std::string out;
        EXPECT_EQ(Utf16ToUtf8(invalid.text, out), invalid.position) << invalid.name;
        EXPECT_EQ(Utf16ToUtf8Lossy(invalid.text), invalid.lossy) << invalid.name;
    }
}

struct InvalidUtf8 {
    const char* name;
    std::string text;
    std::size_t position;
};

TEST(Utf, InvalidUtf8IsRefusedWithItsPosition) {
    const InvalidUtf8 cases[] = {
        {"continuation without a start", "\x80", 0},
        {"never a byte of UTF-8", "ab\xff", 2},
        {"cut two-byte form", "a\xc3", 1},
        {"cut three-byte form", "a\xe2\x82", 1},
        {"cut four-byte form before more text", "a\xf0\x9f\x9a-", 1},
        {"longer form than needed", "\xc0\xaf", 0},
        {"longer three-byte form than needed", "\xe0\x80\xaf", 0},
        {"surrogate", "x\xed\xa0\xbd", 1},
        {"beyond the last character", "\xf4\x90\x80\x80", 0},
        {"after a valid character", "\xc3\xa9\xc3(", 2},
        {"after much ascii", "0123456789\xfe", 10},
    };
    for (const InvalidUtf8& invalid : cases) {
        std::u16string out;
        EXPECT_EQ(Utf8ToUtf16(invalid.text, out), invalid.position) << invalid.name;
        EXPECT_NE(Utf8ToUtf16Lossy(invalid.text).find(u'\uFFFD'), std::u16string::npos)
            << invalid.name;
    }
}

TEST(Utf, LossyUtf8KeepsWhatIsValidAroundAnInvalidPart) {
    EXPECT_EQ(Utf8ToUtf16Lossy("a\xff\xc3\xa9"), u"a\uFFFD\u00e9");
}

}  // namespace
