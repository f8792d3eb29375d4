#include "tool/report/verify_terminal.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tool {
namespace {

Difference OfABug() {
    Difference difference;
    difference.source = "packets/009-bugs.xml";
    difference.record = 17;
    difference.line = 412;
    difference.sourceId = "core-25";
    difference.type = "bug";
    difference.id = "BUG00000017";
    difference.field = "title";
    return difference;
}

TEST(VerifyTerminalTest, ADifferenceIsPlacedInTheSourceAndTheDatabase) {
    Difference difference = OfABug();
    difference.sourceValue = "A";
    difference.databaseValue = "B";
    EXPECT_EQ(DescribeDifference(difference),
              "packets/009-bugs.xml, record 17 (core-25), line 412: bug BUG00000017, title: source "
              "\"A\", database \"B\"");
}

TEST(VerifyTerminalTest, AMissingValueIsNothing) {
    Difference difference = OfABug();
    difference.sourceValue = "A";
    difference.problem = "why";
    EXPECT_EQ(DescribeDifference(difference),
              "packets/009-bugs.xml, record 17 (core-25), line 412: bug BUG00000017, title: source "
              "\"A\", database nothing (why)");
}

TEST(VerifyTerminalTest, ARecordAsAWholeHasNoValues) {
    Difference difference;
    difference.source = "a.xml";
    difference.line = 3;
    difference.type = "bug";
    difference.problem = "missing from the database";
    EXPECT_EQ(DescribeDifference(difference), "a.xml, line 3: bug: missing from the database");
}

TEST(VerifyTerminalTest, AFaultIsPlacedInTheDatabase) {
    EXPECT_EQ(DescribeFault({"bug", "BUG00000017", "title", "a\tb", "too long"}),
              "bug BUG00000017, title: \"a\\tb\" (too long)");
    EXPECT_EQ(DescribeFault({"zt_content", "abc", "", "", "damaged"}), "zt_content abc: damaged");
}

TEST(VerifyTerminalTest, WhatAMapLacksStandsAtTheEndReadyToBePasted) {
    std::ostringstream out;
    std::ostringstream err;
    VerifyTerminal terminal(false, "map.yaml", out, err);
    terminal.Begins(0);
    terminal.Finds({FindingWeight::Note, "unknown-value", "", 2, "the table lacks 1 value",
                    "\"odd\": ?   # 2 times"});
    terminal.Finish({});
    EXPECT_TRUE(
        err.str().ends_with("To be pasted into map.yaml (the table lacks 1 value):\n"
                            "    \"odd\": ?   # 2 times\n"))
        << err.str();
}

struct VerdictCase {
    std::uint64_t compared;
    std::uint64_t differing;
    std::uint64_t missing;
    std::uint64_t differences;
    std::uint64_t extra;
    std::uint64_t faults;
    const char* verdict;
};

TEST(VerifySummaryTest, TheVerdictIsOneSentence) {
    constexpr VerdictCase kCases[] = {
        {9, 0, 0, 0, 0, 0, "Verified: everything in the sources is in the database."},
        {1922, 3, 0, 8, 0, 0, "NOT verified: 3 of 1,922 records differ."},
        {9, 2, 1, 3, 0, 0, "NOT verified: 3 of 10 records differ."},
        {9, 1, 0, 4, 0, 0, "NOT verified: 1 of 9 records differs."},
        {1, 1, 0, 1, 0, 0, "NOT verified: 1 of 1 record differs."},
        {9, 0, 0, 1, 0, 0, "NOT verified: 1 difference found."},
        {0, 0, 0, 2, 0, 0, "NOT verified: 2 differences found."},
        {9, 0, 0, 1, 1, 0, "NOT verified: 1 record of the database is in no source."},
        {9, 0, 0, 3, 2, 0,
         "NOT verified: 1 difference found; 2 records of the database are in no source."},
        {9, 0, 0, 0, 0, 2, "NOT verified: 2 faults in the database itself."},
        {9, 1, 0, 3, 2, 1,
         "NOT verified: 1 of 9 records differs; 2 records of the database are in no source; 1 "
         "fault in the database itself."},
    };
    for (const VerdictCase& test : kCases) {
        VerifySummary summary;
        summary.compared = test.compared;
        summary.differing = test.differing;
        summary.missing = test.missing;
        summary.differences = test.differences;
        summary.extra = test.extra;
        summary.faults = test.faults;
        EXPECT_EQ(summary.Verdict(), test.verdict);
        EXPECT_EQ(summary.Verified(), test.differences + test.faults == 0);
    }
}

}  // namespace
}  // namespace tool
