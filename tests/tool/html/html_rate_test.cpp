#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>
#include <vector>

#include "tool/html/rate_chart.h"
#include "tool/html/rate_samples.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using tool::AxisMarks;
using tool::RateChart;
using tool::RateSamples;

std::uint64_t Sum(const RateSamples& rate) {
    std::uint64_t sum = 0;
    for (const auto& sample : rate.Samples()) {
        sum += sample.records;
    }
    return sum;
}

TEST(RateSamples, CountsTheRecordsOfEachStretch) {
    RateSamples rate;
    rate.Add(0.01, 5);
    rate.Add(0.06, 30);
    rate.Add(0.08, 40);
    rate.Finish(0.16, 50);
    ASSERT_EQ(rate.Samples().size(), 2U);
    EXPECT_EQ(rate.Samples()[0].records, 30U);
    EXPECT_DOUBLE_EQ(rate.Samples()[0].to, 0.06);
    EXPECT_DOUBLE_EQ(rate.Samples()[1].Rate(), 200);
}

TEST(RateSamples, StaysBoundedHoweverLongTheRunIs) {
    RateSamples rate;
    for (std::uint64_t i = 1; i <= 200'000; ++i) {
        rate.Add(static_cast<double>(i) * 0.1, i * 3);
        ASSERT_LT(rate.Samples().size(), RateSamples::kSamplesKept);
    }
    rate.Finish(20'000.5, 600'010);
    EXPECT_LE(rate.Samples().size(), RateSamples::kSamplesKept);
    EXPECT_GE(rate.Samples().size(), RateSamples::kSamplesKept / 2 - 1);
    EXPECT_EQ(Sum(rate), 600'010U);
    EXPECT_DOUBLE_EQ(rate.Samples().back().to, 20'000.5);
}

// A stretch ends with the first record after its step, so it may be somewhat longer.
TEST(RateSamples, KeepsStretchesOfAboutOneLength) {
    RateSamples rate;
    for (std::uint64_t i = 1; i <= 100'000; ++i) {
        rate.Add(static_cast<double>(i) * 0.01, i);
    }
    for (const auto& sample : rate.Samples()) {
        EXPECT_GT(sample.to - sample.from, 6.39);
        EXPECT_LT(sample.to - sample.from, 6.4 * 1.25);
    }
}

TEST(RateSamples, LeaveNoGaps) {
    RateSamples rate;
    for (std::uint64_t i = 1; i <= 5000; ++i) {
        rate.Add(static_cast<double>(i) * 0.03, i);
    }
    rate.Finish(150.01, 5000);
    double end = 0;
    for (const auto& sample : rate.Samples()) {
        EXPECT_DOUBLE_EQ(sample.from, end);
        EXPECT_GT(sample.to, sample.from);
        end = sample.to;
    }
}

TEST(RateSamples, TakeARunThatEndsAtOnce) {
    RateSamples rate;
    rate.Finish(0, 0);
    EXPECT_TRUE(rate.Samples().empty());
}

TEST(AxisMarks, AreRoundNumbersThatReachTheMaximum) {
    EXPECT_THAT(AxisMarks(4608), ElementsAre(0, 1000, 2000, 3000, 4000, 5000));
    EXPECT_THAT(AxisMarks(5), ElementsAre(0, 1, 2, 3, 4, 5));
    EXPECT_THAT(AxisMarks(0.5), ElementsAre(0, 0.1, 0.2, 0.30000000000000004, 0.4, 0.5));
    EXPECT_THAT(AxisMarks(13), ElementsAre(0, 5, 10, 15));
}

const std::vector<RateSamples::Sample> kSamples = {{0, 1, 100}, {1, 2, 400}, {2, 4, 200}};

// The points of the curve, each as "x,y".
std::vector<std::string> CurvePoints(const std::string& html) {
    std::smatch match;
    if (!std::regex_search(html, match, std::regex(R"re(class="curve" points="([^"]*)")re"))) {
        return {};
    }
    const std::string points = match[1];
    const std::regex blank(" ");
    return {std::sregex_token_iterator(points.begin(), points.end(), blank, -1), {}};
}

TEST(RateChart, DrawsEachStretchAsAStep) {
    EXPECT_THAT(CurvePoints(RateChart(kSamples, 175)),
                ElementsAre("0.00,75.00", "25.00,75.00", "25.00,0.00", "50.00,0.00", "50.00,75.00",
                            "100.00,75.00"));
}

TEST(RateChart, LabelsItsAxesWithUnits) {
    const std::string html = RateChart(kSamples, 175);
    EXPECT_THAT(html, HasSubstr("records per second"));
    EXPECT_THAT(html, HasSubstr("elapsed time in seconds"));
    EXPECT_THAT(html, HasSubstr(">400</text>"));
}

TEST(RateChart, ShowsLongRunsInMinutesAndHours) {
    EXPECT_THAT(RateChart({{0, 300, 100}, {300, 600, 100}}, 1), HasSubstr("in minutes"));
    EXPECT_THAT(RateChart({{0, 9000, 100}, {9000, 18000, 100}}, 1), HasSubstr("in hours"));
}

TEST(RateChart, SaysInWordsWhatItShows) {
    const std::string words =
        "175 records per second on average over 4.00 seconds; 100 in the slowest stretch of time "
        "drawn, 400 in the fastest.";
    const std::string html = RateChart(kSamples, 175);
    EXPECT_THAT(html, HasSubstr("aria-label=\"" + words + "\""));
    EXPECT_THAT(html, HasSubstr("<figcaption>" + words + "</figcaption>"));
}

TEST(RateChart, DrawsTheAverage) {
    EXPECT_THAT(RateChart(kSamples, 100),
                HasSubstr(R"(class="average" x1="0" x2="100%" y1="75.00%")"));
}

TEST(RateChart, SaysWhenThereIsNothingToDraw) {
    for (const auto& samples :
         {std::vector<RateSamples::Sample>{}, {{0, 0.01, 5}}, {{0, 1, 0}, {1, 2, 0}}}) {
        EXPECT_THAT(RateChart(samples, 0), HasSubstr("too short for a curve"));
        EXPECT_THAT(RateChart(samples, 0), Not(HasSubstr("<svg")));
    }
}

}  // namespace
