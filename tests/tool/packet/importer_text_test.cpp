#include "tool/packet/importer_text.h"

#include <gtest/gtest.h>

#include <string>

#include "platform/foundation/obx_string.h"
#include "random_records.h"

namespace {

std::string RandomWord(reading::RandomText& random) {
    // Characters of one, two, three and four bytes; those after the first line are white space.
    static constexpr const char* kPieces[] = {"a",
                                              "B",
                                              "k",
                                              "\xE2\x84\xAA",
                                              "\xC3\xBC",
                                              "\xC3\x9C",
                                              "\xF0\x9F\x90\x9E",
                                              "_",
                                              " ",
                                              "\t",
                                              "\r\n",
                                              "\x0B",
                                              "\xC2\xA0",
                                              "\xE2\x80\x83",
                                              "\xE3\x80\x80",
                                              "-",
                                              "\xC2\x85",
                                              "&amp;lt;",
                                              "&#xA;",
                                              "\xE2\x80\x8B",
                                              "&"};
    std::string text;
    for (std::size_t count = random.Below(5); count > 0; --count) {
        text += kPieces[random.Below(std::size(kPieces))];
    }
    return text;
}

int Sign(int number) {
    return number == 0 ? 0 : (number < 0 ? -1 : 1);
}

TEST(ImporterText, IsComparedAndTrimmedAsThePlatformDoes) {
    const unsigned seed = reading::NewSeed();
    SCOPED_TRACE("seed " + std::to_string(seed));
    reading::RandomText random(seed);
    for (int round = 0; round < 20'000; ++round) {
        const std::string a = RandomWord(random);
        const std::string b = RandomWord(random);
        Obx_String left = Obx_String::FromUtf8(a);
        Obx_String right = left;
        ASSERT_EQ(Sign(tool::CompareNoCase(a, b)),
                  Sign(left.CompareNoCase(Obx_String::FromUtf8(b))))
            << '"' << a << "\" and \"" << b << '"';
        left.TrimLeft();
        right.TrimRight();
        ASSERT_EQ(tool::TrimmedLeft(a), left.ToUtf8()) << '"' << a << '"';
        ASSERT_EQ(tool::TrimmedRight(a), right.ToUtf8()) << '"' << a << '"';
        right.TrimLeft();
        ASSERT_EQ(tool::Trimmed(a), right.ToUtf8()) << '"' << a << '"';
    }
}

TEST(ImporterText, IsEqualWithoutRegardToCase) {
    EXPECT_TRUE(tool::EqualNoCase("Source_ID", "source_id"));
    EXPECT_TRUE(tool::EqualNoCase("SCHL\xC3\x9CSSEL", "schl\xC3\xBCssel"));
    EXPECT_TRUE(tool::EqualNoCase("", ""));
    EXPECT_FALSE(tool::EqualNoCase("a", ""));
    EXPECT_FALSE(tool::EqualNoCase("a", "ab"));
}

TEST(ImporterText, HasTheEightEscapesReplacedOneAfterTheOther) {
    EXPECT_EQ(tool::DecodePacketEscapes("&amp;&lt;&gt;&apos;&quot;&#x9;&#xA;&#xD;"),
              "&<>'\"\t\n\r");
    EXPECT_EQ(tool::DecodePacketEscapes("&amp;amp;lt;"), "&amp;lt;");
    EXPECT_EQ(tool::DecodePacketEscapes("&amp;lt;"), "<");
    EXPECT_EQ(tool::DecodePacketEscapes("&#10;&#xa;&LT;"), "&#10;&#xa;&LT;");
}

}  // namespace
