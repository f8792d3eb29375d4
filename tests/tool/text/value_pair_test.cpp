#include "tool/text/value_pair.h"

#include <gtest/gtest.h>

namespace tool {
namespace {

TEST(ValuePairTest, ShortValuesStandAsTheyAre) {
    const ShownPair shown = ShowPair("A \"B\"", "Grüße");
    EXPECT_EQ(shown.source, "A \"B\"");
    EXPECT_EQ(shown.database, "Grüße");
}

TEST(ValuePairTest, ControlCharactersAreVisible) {
    EXPECT_EQ(ShowPair("a\tb\r\nc\x07\x7F", "").source, "a\\tb\\r\\nc\\x07\\x7f");
}

TEST(ValuePairTest, WhatIsNoTextIsVisible) {
    EXPECT_EQ(ShowPair("", "a\xFF").database, "a\\xff");
}

TEST(ValuePairTest, LongValuesAreCutAroundTheFirstDifference) {
    const std::string same(500, 'x');
    const ShownPair shown = ShowPair(same + "A" + same, same + "B");
    const std::string before = "..." + std::string(30, 'x');
    EXPECT_EQ(shown.source, before + "A" + std::string(69, 'x') + "...");
    EXPECT_EQ(shown.database, before + "B");
}

TEST(ValuePairTest, LongValuesThatDifferAtOnceAreCutAtTheEnd) {
    EXPECT_EQ(ShowPair(std::string(101, 'a'), "b").source, std::string(100, 'a') + "...");
    EXPECT_EQ(ShowPair(std::string(100, 'a'), "b").source, std::string(100, 'a'));
}

TEST(ValuePairTest, CharactersAreNotCut) {
    std::string umlauts;
    for (int i = 0; i < 100; ++i) {
        umlauts += "ü";
    }
    for (const char* const shift : {"", "a"}) {
        const ShownPair shown = ShowPair(shift + umlauts + "A" + umlauts, shift + umlauts + "B");
        EXPECT_EQ(shown.source.find("\xEF\xBF\xBD"), std::string::npos) << shown.source;
        EXPECT_NE(shown.source.find('A'), std::string::npos);
    }
}

TEST(ValuePairTest, OneValueCanBeTheBeginningOfTheOther) {
    const std::string same(500, 'x');
    EXPECT_EQ(ShowPair(same, same + "y").source, "..." + std::string(30, 'x'));
}

}  // namespace
}  // namespace tool
