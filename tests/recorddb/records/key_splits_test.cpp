#include "recorddb/records/key_splits.h"

#include <gtest/gtest.h>

#include <string>

namespace recorddb {

namespace {

using Splits = std::vector<std::vector<std::string_view>>;

TEST(KeySplitsTest, AllWaysToCutAreGiven) {
    EXPECT_EQ(KeySplits("a b c", 2), (Splits{{"a", "b c"}, {"a b", "c"}}));
    EXPECT_EQ(KeySplits("a b c", 3), (Splits{{"a", "b", "c"}}));
    EXPECT_EQ(KeySplits("a b", 1), (Splits{{"a b"}}));
}

TEST(KeySplitsTest, NoPartIsEmpty) {
    EXPECT_EQ(KeySplits(" a", 2), Splits{});
    EXPECT_EQ(KeySplits("a ", 2), Splits{});
    EXPECT_EQ(KeySplits("a", 2), Splits{});
    EXPECT_EQ(KeySplits("", 1), Splits{});
    EXPECT_EQ(KeySplits("a  b", 2), (Splits{{"a", " b"}, {"a ", "b"}}));
}

TEST(KeySplitsTest, TextOfVeryManyBlanksEnds) {
    std::string text;
    for (int i = 0; i < 100'000; ++i) {
        text += "x ";
    }
    EXPECT_LE(KeySplits(text, 5).size(), 1000U);
}

}  // namespace

}  // namespace recorddb
