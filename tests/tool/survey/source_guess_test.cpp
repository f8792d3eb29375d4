#include "tool/survey/source_guess.h"

#include "survey_fixture.h"
#include "tool/io/source_error.h"

namespace tool {
namespace {

using testing::ElementsAre;
using testing::Optional;

class SourceGuessTest : public SurveyFixture {
  protected:
    SourceGuess Guess(std::string_view name, std::string_view content,
                      const SurveyOptions& options = {}) const {
        Write(name, content);
        return GuessSource(SurveyFiles({m_folder.File(name)}).Groups().at(0), options);
    }
};

TEST_F(SourceGuessTest, FindsTheSeparator) {
    EXPECT_EQ(Guess("a.csv", "a,b\n1,2\n").csv.separator, ',');
    EXPECT_EQ(Guess("b.csv", "a;b,c;d\n1;2,3;4\n").csv.separator, ';');
    EXPECT_EQ(Guess("c.csv", "a\tb\n\"1,\n2\"\t3\n").csv.separator, '\t');
    EXPECT_EQ(Guess("d.tsv", "a\tb\n1\t2\n").csv.separator, '\t');
    EXPECT_EQ(Guess("e.csv", "only\none\n").csv.separator, ',');
    EXPECT_EQ(Guess("f.csv", "a b,c;d\n1,2\n1;5,2\n").csv.separator, ',');
}

TEST_F(SourceGuessTest, TakesWhatIsNoUtf8ForWindows1252AndSaysSo) {
    const SourceGuess guess = Guess("a.csv", "a;b\nF\xE4hre;1\n");
    EXPECT_EQ(guess.csv.charset, "windows-1252");
    EXPECT_TRUE(guess.isEncodingGuessed);
    EXPECT_FALSE(Guess("b.csv", "a;b\nF\xC3\xA4hre;1\n").isEncodingGuessed);
    EXPECT_FALSE(Guess("c.csv", std::string_view("\xFF\xFE"
                                                 "a\0;\0b\0\n\0",
                                                 10))
                     .isEncodingGuessed);
}

// A character may stand across the border of two pieces that are read.
TEST_F(SourceGuessTest, TakesUtf8ForThatWhereverItsCharactersBegin) {
    for (std::size_t shift = 0; shift < 4; ++shift) {
        std::string text = "a,b\n" + std::string(shift, 'x');
        for (int i = 0; i < 150000; ++i) {
            text += "\xE2\x82\xAC";
        }
        EXPECT_EQ(Guess("a.csv", text).csv.charset, "UTF-8") << shift;
    }
}

TEST_F(SourceGuessTest, IsToldHowFilesAreToBeRead) {
    const SourceGuess guess = Guess("a.csv", "a;b\n1;2\n", {{}, '|', "ISO-8859-15"});
    EXPECT_EQ(guess.csv.separator, '|');
    EXPECT_EQ(guess.csv.charset, "ISO-8859-15");
    EXPECT_FALSE(guess.isEncodingGuessed);
}

TEST_F(SourceGuessTest, FindsTheRowsThatADocumentWraps) {
    EXPECT_THAT(
        Guess("a.json", R"({"total": 2, "issues": [{"id": 1}, {"id": 2}], "more": false})").rows,
        Optional(ElementsAre("issues")));
}

TEST_F(SourceGuessTest, TakesOtherDocumentsAsTheyAre) {
    for (const char* const text :
         {R"([{"a": 1}])", R"({"id": 1, "log": [{"a": 1}]})", R"({"a": [{"b": 1}], "c": {"d": 1}})",
          R"({"a": [{"b": 1}], "c": [{"d": 1}]})", R"({"a": [1, 2]})", R"({"a": 1})", ""}) {
        EXPECT_FALSE(Guess("a.json", text).rows) << text;
    }
}

}  // namespace
}  // namespace tool
