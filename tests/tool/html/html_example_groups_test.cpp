#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tool/html/example_groups.h"
#include "tool/html/reason_pattern.h"

namespace {

using tool::Example;
using tool::ExampleGroup;
using tool::PatternGroups;

class PatternGroupsTest : public testing::Test {
  protected:
    void Reject(const std::string& reason) {
        ++m_rejected;
        m_causes.Add(reason, {"a.xml",
                              m_rejected,
                              10 * m_rejected,
                              fmt::format("core-{}", m_rejected),
                              {{"", reason}}});
    }

    // The causes with their numbers, as "2 title".
    std::vector<std::string> Causes() const {
        std::vector<std::string> causes;
        for (const ExampleGroup& group : m_causes.Groups()) {
            causes.push_back(fmt::format("{} {}", group.count, group.title));
        }
        return causes;
    }

    using Titles = std::vector<std::string>;

    PatternGroups m_causes{"other causes"};
    std::uint64_t m_rejected = 0;
};

TEST_F(PatternGroupsTest, GroupsReasonsThatDifferInValues) {
    Reject(R"(The file "a.png" cannot be attached.)");
    Reject(R"(The file "b.png" cannot be attached.)");
    EXPECT_EQ(Causes(), Titles{R"(2 The file "…" cannot be attached.)"});
}

TEST_F(PatternGroupsTest, GroupsReasonsThatDifferInNumbers) {
    Reject("not well-formed in line 7, column 21");
    Reject("not well-formed in line 1234, column 21");
    EXPECT_EQ(Causes(), Titles{"2 not well-formed in line …, column 21"});
}

TEST_F(PatternGroupsTest, ShowsValuesThatAllReasonsShare) {
    Reject(R"(it has 12 characters, and the field takes 10)");
    Reject(R"(it has 15 characters, and the field takes 10)");
    EXPECT_EQ(Causes(), Titles{"2 it has … characters, and the field takes 10"});
}

TEST_F(PatternGroupsTest, TellsFieldsAndTypesApart) {
    Reject(R"(The field "owner" of a record of type "bug" is empty.)");
    Reject(R"(The field "title" of a record of type "bug" is empty.)");
    Reject(R"(The field "title" of a record of type "task" is empty.)");
    EXPECT_EQ(Causes().size(), 3U);
}

TEST_F(PatternGroupsTest, SeesTheEndOfValuesThatHoldQuotes) {
    Reject(R"(The field "x" cannot take "say "hi" now": no.)");
    Reject(R"(The field "x" cannot take ""hi"": no.)");
    Reject(R"(The field "x" cannot take "5": no.)");
    Reject(R"(The field "x" cannot take "": no.)");
    EXPECT_EQ(Causes(), Titles{R"(4 The field "x" cannot take "…": no.)"});
}

TEST_F(PatternGroupsTest, TakesAQuoteThatNothingCloses) {
    Reject(R"(stopped at "abc)");
    Reject(R"(stopped at ")");
    Reject("\"");
    EXPECT_EQ(Causes().size(), 3U);
}

TEST_F(PatternGroupsTest, PutsTheMostFrequentCauseFirst) {
    Reject("rare");
    Reject("first of two");
    Reject("often");
    Reject("often");
    EXPECT_EQ(Causes(), (Titles{"2 often", "1 rare", "1 first of two"}));
}

TEST_F(PatternGroupsTest, KeepsTheFirstFiveExamples) {
    for (int i = 1; i <= 12; ++i) {
        Reject(fmt::format("wrong value {}", i));
    }
    const auto groups = m_causes.Groups();
    ASSERT_EQ(groups.size(), 1U);
    EXPECT_EQ(groups[0].count, 12U);
    ASSERT_EQ(groups[0].examples.size(), 5U);
    EXPECT_EQ(groups[0].examples[4].record, 5U);
    EXPECT_EQ(groups[0].examples[4].line, 50U);
    EXPECT_EQ(groups[0].examples[4].sourceId, "core-5");
    EXPECT_EQ(groups[0].examples[4].details[0].text, "wrong value 5");
}

// A reason that no other record has. Letters tell it apart, since numbers count as values.
std::string UniqueReason(std::size_t number) {
    return fmt::format("reason {}{}{}", static_cast<char>('a' + number / 676 % 26),
                       static_cast<char>('a' + number / 26 % 26),
                       static_cast<char>('a' + number % 26));
}

TEST_F(PatternGroupsTest, CountsCausesBeyondTheLimitTogether) {
    for (std::size_t i = 0; i < PatternGroups::kGroupsKept + 30; ++i) {
        Reject(UniqueReason(i));
    }
    Reject(UniqueReason(0));
    const auto groups = m_causes.Groups();
    ASSERT_EQ(groups.size(), PatternGroups::kGroupsKept + 1);
    EXPECT_EQ(groups.front().count, 2U);
    EXPECT_EQ(groups.back().title, "other causes");
    EXPECT_EQ(groups.back().count, 30U);
    EXPECT_EQ(groups.back().examples.size(), ExampleGroup::kExamplesKept);
}

TEST_F(PatternGroupsTest, BoundsTheTextsItKeeps) {
    const std::string longValue(1'000'000, 'x');
    Reject("cannot take \"" + longValue + "\"");
    Reject(longValue);
    for (const ExampleGroup& group : m_causes.Groups()) {
        EXPECT_LT(group.title.size(), 1000U);
        EXPECT_LT(group.examples[0].details[0].text.size(), 10'000U);
    }
}

TEST_F(PatternGroupsTest, GroupsLongValuesAllTheSame) {
    Reject("cannot take \"" + std::string(5000, 'x') + "\": too long");
    Reject("cannot take \"" + std::string(6000, 'y') + "\": too long");
    EXPECT_EQ(Causes(), Titles{"2 cannot take \"…\": too long"});
}

}  // namespace
