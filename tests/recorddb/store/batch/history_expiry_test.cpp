#include "recorddb/store/batch/history_expiry.h"

#include <gtest/gtest.h>

namespace recorddb {

namespace {

using Entries = std::vector<HistoryTimes>;

Entries WorkedOut(Entries entries) {
    WorkOutExpiry(entries);
    return entries;
}

TEST(HistoryExpiryTest, EntryExpiresWhenTheNextOneBegins) {
    EXPECT_EQ(WorkedOut({{1, "10", ""}, {2, "20", ""}, {3, "30", ""}}),
              (Entries{{1, "10", "20"}, {2, "20", "30"}, {3, "30", ""}}));
}

TEST(HistoryExpiryTest, EntriesAreOrderedByTimeThenArrival) {
    EXPECT_EQ(WorkedOut({{1, "30", ""}, {2, "10", ""}, {3, "10", ""}}),
              (Entries{{2, "10", "10"}, {3, "10", "30"}, {1, "30", ""}}));
}

TEST(HistoryExpiryTest, GivenExpiryStands) {
    EXPECT_EQ(WorkedOut({{1, "10", "15"}, {2, "20", "25"}}),
              (Entries{{1, "10", "15"}, {2, "20", "25"}}));
}

TEST(HistoryExpiryTest, EntryThatComesInBetweenEndsTheOneBefore) {
    EXPECT_EQ(WorkedOut({{1, "10", "30"}, {2, "30", ""}, {3, "20", ""}}),
              (Entries{{1, "10", "20"}, {3, "20", "30"}, {2, "30", ""}}));
}

TEST(HistoryExpiryTest, NoEntriesNeedNothing) {
    EXPECT_EQ(WorkedOut({}), Entries{});
}

}  // namespace

}  // namespace recorddb
