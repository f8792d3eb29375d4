#include "tool/sources/mapped/key_book.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>

namespace tool {
namespace {

TEST(KeyFilter, CallsNearlyAllKeysNewThatAre) {
    KeyFilter filter;
    int wronglyKnown = 0;
    for (int i = 0; i < 200000; ++i) {
        wronglyKnown += filter.MayHave(std::hash<std::string>()(std::to_string(i))) ? 1 : 0;
    }
    EXPECT_LE(wronglyKnown, 1);
}

TEST(KeyFilter, NeverCallsAKeyNewThatCameBefore) {
    KeyFilter filter;
    for (int pass = 0; pass < 2; ++pass) {
        for (std::uint64_t hash = 0; hash < 50000; ++hash) {
            EXPECT_TRUE(filter.MayHave(hash) || pass == 0);
        }
    }
}

TEST(KeyBook, KnowsTheFirstRecordOfEachKeyHoweverManyCameInBetween) {
    KeyBook keys;
    for (std::uint64_t i = 0; i < 1000; ++i) {
        const auto number = static_cast<std::uint32_t>(i);
        EXPECT_FALSE(keys.Note(1, std::to_string(i), {i, {number, i + 1, i + 2}, "h"}));
        const auto known = keys.Note(1, std::to_string(i / 2), {7000, {}, ""});
        ASSERT_TRUE(known);
        EXPECT_EQ(known->first, i / 2);
        EXPECT_EQ(known->place.file, i / 2);
        EXPECT_EQ(known->place.number, i / 2 + 1);
        EXPECT_EQ(known->place.line, i / 2 + 2);
        EXPECT_EQ(known->hash, "h");
    }
}

TEST(KeyBook, TellsTheKeysOfStepsApart) {
    KeyBook keys;
    EXPECT_FALSE(keys.Note(0, "a", {1, {}, ""}));
    EXPECT_FALSE(keys.Note(1, "a", {2, {}, ""}));
    EXPECT_EQ(keys.Note(0, "a", {3, {}, ""})->first, 1U);
    EXPECT_EQ(keys.Note(1, "a", {4, {}, ""})->first, 2U);
}

}  // namespace
}  // namespace tool
