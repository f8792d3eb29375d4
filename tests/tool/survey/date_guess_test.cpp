#include "tool/survey/date_guess.h"

#include <gmock/gmock.h>

namespace tool {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

DateGuess Guess(const std::vector<std::string>& texts) {
    DateGuess guess;
    for (const std::string& text : texts) {
        guess.Add(text);
    }
    return guess;
}

TEST(DateGuess, KnowsCommonFormats) {
    const auto formatOf = [](const std::string& text) { return Guess({text}).Formats(); };
    EXPECT_THAT(formatOf("26.03.2023 01:59"), ElementsAre("%d.%m.%Y %H:%M"));
    EXPECT_THAT(formatOf("12/31/2020"), ElementsAre("%m/%d/%Y"));
    EXPECT_THAT(formatOf("31 Dec 2020 10:00:01"), ElementsAre("%d %b %Y %H:%M:%S"));
    EXPECT_THAT(formatOf("2020-12-31T10:00:00Z"), ElementsAre(""));
    EXPECT_THAT(formatOf("2020-12-31"), ElementsAre(""));
}

TEST(DateGuess, LeavesOpenWhichNumberIsTheDayUntilOneTells) {
    EXPECT_THAT(Guess({"03/04/2020"}).Formats(), ElementsAre("%m/%d/%Y", "%d/%m/%Y"));
    EXPECT_THAT(Guess({"03/04/2020", "13/04/2020"}).Formats(), ElementsAre("%d/%m/%Y"));
}

TEST(DateGuess, TakesNothingElseForADate) {
    for (const char* const text : {"hello", "12", "3.5", "2020", "1.2.3", "31.02.2020", "007-11"}) {
        EXPECT_THAT(Guess({text}).Formats(), IsEmpty()) << text;
    }
}

TEST(DateGuess, NamesATextThatIsNoDateWhileMostAre) {
    std::vector<std::string> texts(50, "2020-01-02");
    texts.emplace_back("soon");
    const DateGuess guess = Guess(texts);
    EXPECT_FALSE(guess.AreDates());
    EXPECT_EQ(guess.Dates(), 50U);
    EXPECT_EQ(guess.Exception(), "soon");
}

TEST(DateGuess, GivesUpWhereTextsAreMixed) {
    EXPECT_EQ(Guess({"2020-01-02", "a", "b", "c", "d", "e"}).Dates(), 0U);
}

TEST(DateGuess, SaysWhetherZonesAreMissing) {
    EXPECT_TRUE(Guess({"2020-01-02 03:04"}).LacksZone());
    EXPECT_TRUE(Guess({"2020-01-02T03:04Z", "2020-01-02T03:04"}).LacksZone());
    EXPECT_FALSE(Guess({"2020-01-02T03:04Z", "2020-01-02T03:04+01:00"}).LacksZone());
    EXPECT_TRUE(Guess({"31.12.2020 10:00"}).LacksZone());
    EXPECT_FALSE(Guess({"31.12.2020 10:00:00 +0100"}).LacksZone());
    EXPECT_FALSE(Guess({"31.12.2020"}).LacksZone());
    EXPECT_FALSE(Guess({"2020-12-31"}).LacksZone());
}

}  // namespace
}  // namespace tool
