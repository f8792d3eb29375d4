#include "platform/core/adcharset.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/platform/thrown_text.h"

namespace {

using Converter = AdCharset::converter_t;

std::string Convert(std::vector<unsigned short> text, Converter converter) {
    text.push_back(0);
    AdMbcsString converted;
    converted.cvtFromTchar(AdCharset::getUTF8Charset(), text.data(), converter);
    return converted.getData();
}

TEST(AdCharset, ItsConvertersHaveTheNumbersOfTheContract) {
    EXPECT_EQ(static_cast<int>(Converter::kLossy), 0);
    EXPECT_EQ(static_cast<int>(Converter::kStrict), 1);
}

TEST(AdCharset, KnowsUtf8ByName) {
    EXPECT_STREQ(AdCharset::getUTF8Charset().getName(), "UTF-8");
}

TEST(AdMbcsString, IsEmptyAtFirst) {
    EXPECT_STREQ(AdMbcsString().getData(), "");
}

TEST(AdMbcsString, ConvertsToUtf8) {
    EXPECT_EQ(Convert({'a', 0xE9, 0x20AC, 0xD83D, 0xDEA2}, Converter::kStrict),
              "a\xc3\xa9\xe2\x82\xac\xf0\x9f\x9a\xa2");
}

TEST(AdMbcsString, TakesANullTextAsEmpty) {
    AdMbcsString converted;
    converted.cvtFromTchar(AdCharset::getUTF8Charset(), nullptr, Converter::kStrict);
    EXPECT_STREQ(converted.getData(), "");
}

TEST(AdMbcsString, ReplacesItsFormerText) {
    const unsigned short first[] = {'f', 'i', 'r', 's', 't', 0};
    const unsigned short second[] = {'2', 0};
    AdMbcsString converted;
    converted.cvtFromTchar(AdCharset::getUTF8Charset(), first, Converter::kStrict);
    converted.cvtFromTchar(AdCharset::getUTF8Charset(), second, Converter::kStrict);
    EXPECT_STREQ(converted.getData(), "2");
}

TEST(AdMbcsString, TheLossyConverterReplacesWhatIsInvalid) {
    EXPECT_EQ(Convert({'a', 0xD83D, 'b'}, Converter::kLossy),
              "a\xef\xbf\xbd"
              "b");
}

struct Invalid {
    std::vector<unsigned short> text;
    const char* position;
};

TEST(AdMbcsString, TheStrictConverterRefusesWhatIsInvalidWithItsPosition) {
    const Invalid cases[] = {
        {{0xD83D}, "0"}, {{'a', 'b', 0xDEA2, 'c'}, "2"}, {{0xD83D, 0xDEA2, 0xD83D, 'x'}, "2"}};
    for (const Invalid& invalid : cases) {
        EXPECT_EQ(ThrownText([&] { Convert(invalid.text, Converter::kStrict); }),
                  std::string("The text is not valid UTF-16: the unit at index ") +
                      invalid.position + " belongs to no character.");
    }
}

}  // namespace
