#include "tool/io/decoding_marks.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(DecodingMarks, AreFoundWhereverTheyStand) {
    for (std::size_t at : {0U, 1U, 4095U, 4096U, 9999U}) {
        std::string text(10000, 'x');
        text[at] = static_cast<char>(tool::ByteMark);
        EXPECT_EQ(tool::FindDecodingMark(text), at);
    }
}

TEST(DecodingMarks, AreNotFoundInText) {
    EXPECT_EQ(tool::FindDecodingMark(""), std::string_view::npos);
    EXPECT_EQ(tool::FindDecodingMark("a\xC3\xA4\xF4\x8F\xBF\xBF"), std::string_view::npos);
}

TEST(DecodingMarks, BecomeReplacementCharacters) {
    EXPECT_EQ(tool::ReplaceDecodingMarks("a\xF8\xF9\xC3\xA4"), "a\xEF\xBF\xBD\xEF\xBF\xBD\xC3\xA4");
}

TEST(DecodingMarks, SayWhatTheyStandFor) {
    EXPECT_EQ(tool::DescribeDecodingMark('\xF8'), "a NUL character");
    EXPECT_EQ(tool::DescribeDecodingMark('\xF9'), "a byte that is not UTF-8");
    EXPECT_EQ(tool::DescribeDecodingMark('\xFA'), "an unpaired UTF-16 surrogate");
    EXPECT_EQ(tool::DescribeDecodingMark('\xFB'), "half a UTF-16 character at the end");
}

}  // namespace
