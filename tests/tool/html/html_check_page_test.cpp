#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tool/html/load_page.h"
#include "tool/html/load_verdict.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using tool::LoadTotals;
using tool::RunSummary;

RunSummary Start() {
    tool::LoadOptions options;
    options.database = "tracker.db";
    options.sources = {"packets"};
    return RunSummary({"check", options, {}, "1.2.3", true});
}

RunSummary Checked(std::uint64_t rejected, int losses) {
    RunSummary summary = Start();
    for (int i = 0; i < losses; ++i) {
        summary.AddLoss({});
    }
    LoadTotals totals;
    totals.read = 5000;
    totals.created = 5000 - rejected;
    totals.rejected = rejected;
    summary.Finish(totals);
    return summary;
}

std::string VerdictText(const RunSummary& summary) {
    const tool::PageVerdict verdict = VerdictOf(summary);
    return verdict.state + ": " + verdict.sentence;
}

TEST(CheckPage, SaysThatALoadWouldBeComplete) {
    EXPECT_EQ(VerdictText(Checked(0, 0)),
              "Would load completely: All 5,000 records of the sources would be loaded; none would "
              "be rejected, and nothing lost.");
}

TEST(CheckPage, SaysThatALoadWouldReject) {
    EXPECT_EQ(VerdictText(Checked(3, 0)),
              "Would reject records: A load would reject 3 of 5,000 records.");
}

TEST(CheckPage, SaysThatALoadWouldLose) {
    EXPECT_EQ(VerdictText(Checked(0, 1)), "Would lose data: A load would lose 1 detail silently.");
    EXPECT_EQ(VerdictText(Checked(3, 2)),
              "Would lose data: A load would reject 3 of 5,000 records and lose 2 details "
              "silently.");
}

TEST(CheckPage, SaysThatNothingWasKept) {
    EXPECT_THAT(
        LoadPage(Checked(3, 0)),
        AllOf(HasSubstr("<h1>Check of a load into tracker.db</h1>"),
              HasSubstr("nothing of it was kept"), HasSubstr("3 records would be rejected, for "),
              HasSubstr("<dd>ztimport check</dd>")));
}

TEST(CheckPage, SaysThatItLookedForLosses) {
    EXPECT_THAT(LoadPage(Checked(0, 0)),
                HasSubstr("The rehearsal looked for them and found none."));
}

TEST(CheckPage, LeadsToTheLoad) {
    const auto steps = NextSteps(Checked(0, 0));
    ASSERT_EQ(steps.size(), 1U);
    EXPECT_THAT(steps[0].command, testing::ElementsAre("ztimport", "load", "tracker.db", "packets",
                                                       "--rejects", "rejects"));
}

TEST(CheckPage, LeadsToMendingFirst) {
    const auto steps = NextSteps(Checked(3, 2));
    ASSERT_EQ(steps.size(), 4U);
    EXPECT_THAT(steps[2].command,
                testing::ElementsAre("ztimport", "check", "tracker.db", "packets"));
}

}  // namespace
