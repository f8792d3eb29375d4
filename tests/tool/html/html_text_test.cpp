#include "tool/html/html_text.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "tool/text/number_text.h"

namespace {

using namespace std::string_literals;
using tool::HtmlText;

TEST(HtmlText, EscapesWhatWouldBeMarkup) {
    EXPECT_EQ(HtmlText(R"(<b title="x" class='y'> & more)"),
              "&lt;b title=&quot;x&quot; class=&#39;y&#39;&gt; &amp; more");
}

TEST(HtmlText, KeepsLettersOfAllScripts) {
    EXPECT_EQ(HtmlText("Zürich, 東京, \U0001F600\tx\ny"), "Zürich, 東京, \U0001F600\tx\ny");
}

TEST(HtmlText, ReplacesWhatIsNoText) {
    const struct {
        std::string bytes;
        std::string shown;
    } kCases[] = {
        {"a\xFFz", "a\uFFFDz"},
        {"a\xC3", "a\uFFFD"},
        {"\xC0\xAF", "\uFFFD\uFFFD"},
        {"a\0z"s, "a\uFFFDz"},
        {"a\x1Bz", "a\uFFFDz"},
        {"a\x7Fz", "a\uFFFDz"},
        {"a\xC2\x85z", "a\uFFFDz"},
        {"\xEF\xBF\xBF", "\uFFFD"},
        {"\xC3<script>", "\uFFFD&lt;script&gt;"},
    };
    for (const auto& [bytes, shown] : kCases) {
        EXPECT_EQ(HtmlText(bytes), shown);
    }
}

TEST(HtmlText, ShowsCharactersThatWouldReverseTheText) {
    EXPECT_EQ(HtmlText("a\u202Eb\u2066"), "a\\u202eb\\u2066");
}

TEST(Clipped, KeepsWhatFits) {
    EXPECT_EQ(tool::Clipped("abc", 3), "abc");
}

TEST(Clipped, LeavesCharactersWhole) {
    EXPECT_EQ(tool::Clipped("aäöü", 4), "aä…");
}

TEST(Grouped, SeparatesThousands) {
    EXPECT_EQ(tool::Grouped(0), "0");
    EXPECT_EQ(tool::Grouped(999), "999");
    EXPECT_EQ(tool::Grouped(1000), "1,000");
    EXPECT_EQ(tool::Grouped(12345678), "12,345,678");
    EXPECT_EQ(tool::Grouped(18446744073709551615U), "18,446,744,073,709,551,615");
}

TEST(CountOf, KnowsOneAndMany) {
    EXPECT_EQ(tool::CountOf(1, "record"), "1 record");
    EXPECT_EQ(tool::CountOf(0, "record"), "0 records");
    EXPECT_EQ(tool::CountOf(1200, "history entry", "history entries"), "1,200 history entries");
}

TEST(DurationText, ShowsThreeDigitsOrTwoUnits) {
    const struct {
        double seconds;
        const char* shown;
    } kCases[] = {
        {0, "0.00 seconds"},          {5.326, "5.33 seconds"},       {9.997, "10.0 seconds"},
        {59.94, "59.9 seconds"},      {59.96, "1 minute 0 seconds"}, {61, "1 minute 1 second"},
        {3599.6, "1 hour 0 minutes"}, {7860, "2 hours 11 minutes"},
    };
    for (const auto& [seconds, shown] : kCases) {
        EXPECT_EQ(tool::DurationText(seconds), shown);
    }
}

TEST(RateText, ShowsADecimalOfLowRates) {
    EXPECT_EQ(tool::RateText(0.25), "0.2");
    EXPECT_EQ(tool::RateText(9.96), "10");
    EXPECT_EQ(tool::RateText(1350.4), "1,350");
}

TEST(UtcText, DoesNotDependOnTheTimeZone) {
    const std::chrono::system_clock::time_point time{std::chrono::seconds(1795237720)};
    EXPECT_EQ(tool::UtcText(time), "2026-11-21 05:08:40 UTC");
    EXPECT_EQ(tool::UtcAttribute(time), "2026-11-21T05:08:40Z");
}

TEST(ShellWord, QuotesWhatTheShellWouldTakeApart) {
    EXPECT_EQ(tool::ShellWord("packets/009-bugs.xml"), "packets/009-bugs.xml");
    EXPECT_EQ(tool::ShellWord("my tracker.db"), "'my tracker.db'");
    EXPECT_EQ(tool::ShellWord("it's"), R"('it'\''s')");
    EXPECT_EQ(tool::ShellWord("$(rm x)"), "'$(rm x)'");
    EXPECT_EQ(tool::ShellWord(""), "''");
}

}  // namespace
