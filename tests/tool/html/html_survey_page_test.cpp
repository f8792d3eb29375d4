#include <filesystem>

#include "survey_fixture.h"
#include "tool/html/survey_page.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class SurveyPageTest : public SurveyFixture {
  protected:
    std::string Page() const {
        PageFacts facts;
        facts.title = "Survey of export";
        facts.command = "survey";
        facts.sources = {"an export"};
        facts.version = "1.2.3";
        return SurveyPage(Look(), facts);
    }
};

TEST_F(SurveyPageTest, ShowsEachColumnWithCountsAndValues) {
    Write("bugs.csv", "nr,state\n1,open\n2,open\n3,\n");
    EXPECT_THAT(
        Page(),
        AllOf(HasSubstr("<p class=\"state\">All rows can be used</p>"),
              HasSubstr("3 rows of 1 file were looked at."),
              HasSubstr("<th scope=\"row\">state</th><td data-label=\"Kind\">text</td>"
                        "<td class=\"number\" data-label=\"Values\">2</td>"
                        "<td class=\"number\" data-label=\"Empty\">1</td>"),
              HasSubstr("open (2)"), HasSubstr("could be the key: each row has another value")));
}

TEST_F(SurveyPageTest, SaysThatRowsCannotBeUsed) {
    Write("bugs.csv", "a,b\n1,2\n3\n");
    EXPECT_THAT(Page(),
                AllOf(HasSubstr("verdict attention"),
                      HasSubstr("1 row of 1 file was looked at. 1 more row cannot be used."),
                      HasSubstr(", row 2, line 3: ")));
}

TEST_F(SurveyPageTest, LetsNoMarkupOfTheDataThrough) {
    Write("a.jsonl", "{\"<b>x\": \"<script>evil()</script>\"}\n");
    EXPECT_THAT(Page(),
                AllOf(HasSubstr("&lt;script&gt;evil()&lt;/script&gt;"), HasSubstr("&lt;b&gt;x"),
                      Not(HasSubstr("<script")), Not(HasSubstr("<b>"))));
}

TEST_F(SurveyPageTest, SaysWhatToDoNext) {
    Write("a.csv", "a\n1\n");
    EXPECT_THAT(Page(), AllOf(HasSubstr("<span>&#39;an export&#39;</span>"),
                              HasSubstr("<span>--write-map</span>"), Not(HasSubstr("Database"))));
}

TEST_F(SurveyPageTest, NamesFilesThatWereNotRead) {
    Write("a.csv", "a\n1\n");
    Write("b.txt", "");
    EXPECT_THAT(Page(), HasSubstr("<li>" + m_folder.File("b.txt") + "</li>"));
}

}  // namespace
}  // namespace tool
