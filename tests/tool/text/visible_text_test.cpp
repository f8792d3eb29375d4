#include "tool/text/visible_text.h"

#include <gtest/gtest.h>

#include <string>

namespace tool {
namespace {

using namespace std::string_literals;

struct Shown {
    std::string text;
    std::string visible;
};

TEST(VisibleText, EscapesWhatCouldDoSomethingToATerminal) {
    const Shown kCases[] = {
        {"a\x1B[31mb", "a\\x1b[31mb"},
        {"a\0b\x7F"s, "a\\x00b\\x7f"},
        {"a\tb\r\nc", "a\\tb\\r\\nc"},
        {"\xC2\x80\xC2\x9B"
         "31m\xC2\x9F",
         "\\u0080\\u009b31m\\u009f"},
        {"\u061C\u200E\u200F", "\\u061c\\u200e\\u200f"},
        {"\u202A\u202B\u202C\u202D\u202E", "\\u202a\\u202b\\u202c\\u202d\\u202e"},
        {"\u2066\u2067\u2068\u2069", "\\u2066\\u2067\\u2068\\u2069"},
        {"\u2028\u2029", "\\u2028\\u2029"},
        {"\xEF\xBF\xBE \xF0\x9F\xBF\xBF \xEF\xB7\x90", "\\ufffe \\U0001ffff \\ufdd0"},
        {"a\xFFz", "a\\xffz"},
        {"a\xC3", "a\\xc3"},
        {"\xED\xA0\x80", "\\xed\\xa0\\x80"},
        {"\x9B"
         "31m",
         "\\x9b31m"},
    };
    for (const auto& [text, visible] : kCases) {
        EXPECT_EQ(VisibleText(text), visible);
    }
}

TEST(VisibleText, LeavesTextAsItIs) {
    for (const char* const text : {"", "a \"b\" \\ c", "Zürich \u00A0 東京 \U0001F600", "שלום עולם",
                                   "e\u0301 \u200D \uFFFD"}) {
        EXPECT_EQ(VisibleText(text), text);
    }
}

TEST(VisibleLines, KeepLineFeedsAndIndentWhatFollows) {
    EXPECT_EQ(VisibleLines("a\tb\nztimport: all is well\r\n"),
              "a\\tb\n    ztimport: all is well\\r\n    ");
}

}  // namespace
}  // namespace tool
