#include "recorddb/store/batch/hash_filter.h"

#include <gtest/gtest.h>

namespace recorddb {
namespace {

constexpr std::size_t kBits = 1U << 14U;
constexpr std::size_t kExact = 10;
constexpr std::uint64_t kFactor = 0x9E3779B97F4A7C15U;  // spreads small numbers over all bits

TEST(HashFilter, KnowsFewHashesExactly) {
    HashFilter filter(kBits, kExact);
    EXPECT_FALSE(filter.MayHave(1));
    for (std::uint64_t i = 0; i < kExact; ++i) {
        filter.Add(i);
    }
    for (std::uint64_t i = 0; i < 2 * kExact; ++i) {
        EXPECT_EQ(filter.MayHave(i), i < kExact) << i;
    }
}

TEST(HashFilter, NeverDeniesWhatWasAddedAndSeldomAffirmsAnythingElse) {
    HashFilter filter(kBits, kExact);
    constexpr std::uint64_t added = 600;
    for (std::uint64_t i = 1; i <= added; ++i) {
        filter.Add(i * kFactor);
    }
    int affirmed = 0;
    for (std::uint64_t i = 1; i <= added; ++i) {
        EXPECT_TRUE(filter.MayHave(i * kFactor)) << i;
        affirmed += filter.MayHave((added + i) * kFactor) ? 1 : 0;
    }
    EXPECT_LT(affirmed, 10);
}

}  // namespace
}  // namespace recorddb
