#include "tool/survey/survey_listing.h"

#include <sstream>

#include "survey_fixture.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;

class SurveyListingTest : public SurveyFixture {
  protected:
    std::string Print() const {
        std::ostringstream out;
        PrintSurvey(Look(), out);
        return out.str();
    }
};

TEST_F(SurveyListingTest, ShowsColumnsWithCountsAndValues) {
    Write("bugs.csv", "nr;state\n1;open\n2;open\n3;closed\n4;\n");
    EXPECT_EQ(Print(), m_folder.File("bugs.csv") +
                           ": CSV, separated by ;, UTF-8\n"
                           "4 rows\n"
                           "\n"
                           "  column      values    empty  longest      different  kind\n"
                           "  nr               4        0        1              4  whole number\n"
                           "      such as 1, 2, 3, 4\n"
                           "      could be the key: each row has another value\n"
                           "  state            3        1        6              2  text\n"
                           "      open (2), closed (1)\n");
}

TEST_F(SurveyListingTest, ShowsRowsThatCannotBeUsed) {
    Write("bugs.csv", "a,b\n1\n");
    EXPECT_THAT(Print(), HasSubstr("0 rows, and 1 row that cannot be used\n  " +
                                   m_folder.File("bugs.csv") + ", row 1, line 2: "));
}

TEST_F(SurveyListingTest, LetsNothingFromTheFilesReachTheTerminal) {
    Write("a.jsonl", "{\"\\u001b[2Jname\": \"\\u001b]0;x\\u0007\\u202e\"}\n");
    const std::string text = Print();
    EXPECT_THAT(text, Not(HasSubstr("\x1b")));
    EXPECT_THAT(text, Not(HasSubstr("\u202e")));
    EXPECT_THAT(text, HasSubstr("\\x1b[2Jname"));
}

TEST_F(SurveyListingTest, NamesWhatWasNotRead) {
    Write("a.csv", "a\n1\n");
    Write("b.txt", "");
    EXPECT_THAT(Print(), HasSubstr("\nnot read: 1 file, " + m_folder.File("b.txt") + "\n"));
}

}  // namespace
}  // namespace tool
