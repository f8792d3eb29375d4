#include "tool/report/progress.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <sstream>
#include <string>

namespace {

using namespace std::chrono_literals;
using tool::Progress;
using tool::ProgressStyle;

class ProgressTest : public testing::Test {
  protected:
    Progress Start(ProgressStyle style, std::uint64_t totalBytes = 1000) {
        return Progress(m_out, style, totalBytes, [this] { return m_now; });
    }

    void Pass(std::chrono::milliseconds time) { m_now += time; }

    // What was written since the last call.
    std::string Shown() {
        std::string text = m_out.str();
        m_out.str("");
        return text;
    }

    std::ostringstream m_out;
    Progress::TimePoint m_now{};
};

TEST_F(ProgressTest, RedrawsOneLineOnATerminal) {
    Progress progress = Start(ProgressStyle::Terminal);
    Pass(1000ms);
    progress.Update(50, 100);
    EXPECT_EQ(Shown(), "\r50 records, 50 records/s, 10 %, 0:09 left");
    Pass(1000ms);
    progress.Update(150, 300);
    EXPECT_EQ(Shown(), "\r150 records, 75 records/s, 30 %, 0:05 left");
}

TEST_F(ProgressTest, RedrawsAtMostFiveTimesASecond) {
    Progress progress = Start(ProgressStyle::Terminal);
    int drawn = 0;
    for (unsigned i = 0; i < 1000; ++i) {
        Pass(1ms);
        progress.Update(i, i);
        drawn += Shown().empty() ? 0 : 1;
    }
    EXPECT_EQ(drawn, 5);
}

TEST_F(ProgressTest, WipesOutTheRestOfALongerLine) {
    Progress progress = Start(ProgressStyle::Terminal);
    Pass(1000ms);
    progress.Update(1, 1);
    std::string longer = Shown();
    Pass(1000ms);
    progress.Update(900, 1000);
    EXPECT_EQ(Shown(),
              "\r900 records, 450 records/s, 100 %" + std::string(longer.size() - 34, ' '));
}

TEST_F(ProgressTest, ShowsTheEndAndLeavesTheLine) {
    Progress progress = Start(ProgressStyle::Terminal, 0);
    Pass(1000ms);
    progress.Update(10, 1);
    progress.Update(20, 2);
    Shown();
    progress.Finish();
    EXPECT_EQ(Shown(), "\r20 records, 20 records/s\n");
    progress.Finish();
    progress.Update(30, 3);
    EXPECT_EQ(Shown(), "");
}

TEST_F(ProgressTest, LeavesNoLineWhereNoneWasDrawn) {
    Progress progress = Start(ProgressStyle::Terminal);
    progress.Update(10, 10);
    progress.Finish();
    EXPECT_EQ(Shown(), "");
}

TEST_F(ProgressTest, PrintsMessagesInPlaceOfTheLine) {
    Progress progress = Start(ProgressStyle::Terminal, 0);
    Pass(1000ms);
    progress.Update(10, 1);
    Shown();
    progress.Print("warning");
    EXPECT_EQ(Shown(), "\r" + std::string(24, ' ') + "\rwarning\n");
}

TEST_F(ProgressTest, WritesALineEveryTenSecondsElsewhere) {
    Progress progress = Start(ProgressStyle::Plain, 0);
    std::string lines;
    for (unsigned second = 1; second <= 30; ++second) {
        Pass(1000ms);
        progress.Update(second * 10, second);
        lines += Shown();
    }
    progress.Finish();
    EXPECT_EQ(lines + Shown(),
              "100 records, 10 records/s\n200 records, 10 records/s\n300 records, 10 records/s\n");
}

TEST_F(ProgressTest, WritesALineEveryTenPerCentButNotMoreThanOneASecond) {
    Progress progress = Start(ProgressStyle::Plain);
    for (unsigned i = 1; i <= 10; ++i) {
        Pass(500ms);
        progress.Update(i, i * 100);
    }
    EXPECT_EQ(Shown(),
              "2 records, 2 records/s, 20 %, 0:04 left\n4 records, 2 records/s, 40 %, 0:03 left\n"
              "6 records, 2 records/s, 60 %, 0:02 left\n8 records, 2 records/s, 80 %, 0:01 left\n"
              "10 records, 2 records/s, 100 %\n");
}

TEST_F(ProgressTest, GoesByTheLastTenSeconds) {
    Progress progress = Start(ProgressStyle::Terminal, 1000000);
    std::uint64_t records = 100000;
    progress.Update(records, 100000);
    for (int second = 0; second < 20; ++second) {
        Pass(1000ms);
        records += 10;
        progress.Update(records, 100000 + records);
    }
    std::string shown = Shown();
    EXPECT_THAT(shown, testing::EndsWith("100,200 records, 10 records/s, 20 %, 22:13:00 left"));
}

TEST_F(ProgressTest, IsQuietButForMessages) {
    Progress progress = Start(ProgressStyle::Quiet);
    Pass(100s);
    progress.Update(10, 1000);
    progress.Print("warning");
    progress.Finish();
    EXPECT_EQ(Shown(), "warning\n");
}

TEST(ChooseProgressStyle, DrawsOnTerminalsOnly) {
    int terminal = ::open("/dev/ptmx", O_RDWR | O_NOCTTY);
    int file = ::open("/dev/null", O_WRONLY);
    if (terminal >= 0) {
        EXPECT_EQ(tool::ChooseProgressStyle(false, terminal), ProgressStyle::Terminal);
        EXPECT_EQ(tool::ChooseProgressStyle(true, terminal), ProgressStyle::Quiet);
        ::close(terminal);
    }
    EXPECT_EQ(tool::ChooseProgressStyle(false, file), ProgressStyle::Plain);
    EXPECT_EQ(tool::ChooseProgressStyle(true, file), ProgressStyle::Quiet);
    ::close(file);
}

}  // namespace
