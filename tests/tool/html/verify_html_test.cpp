#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include "tool/process/usage_error.h"
#include "verify/verify_fixture.h"

namespace tool {

namespace {

using testing::AllOf;
using testing::HasSubstr;

class VerifyHtmlTest : public OnEachEngine<VerifyFixture> {
  protected:
    VerifyHtmlTest() { m_verifyOptions.html = m_folder.File("page.html"); }

    std::string Page() const {
        std::ostringstream content;
        content << std::ifstream(m_verifyOptions.html).rdbuf();
        return content.str();
    }
};

ON_EACH_ENGINE(VerifyHtmlTest);

TEST_P(VerifyHtmlTest, SaysThatAllIsThereAndWhatTheLoadsDid) {
    const auto sources = Tracker();
    EXPECT_EQ(LoadAndVerify(sources), 0);
    EXPECT_THAT(Page(),
                AllOf(HasSubstr("<p class=\"state\">Verified</p>"), HasSubstr("There are none."),
                      HasSubstr("sources of records were loaded to their end"),
                      HasSubstr("bug <span class=\"kind\">history</span>")));
}

TEST_P(VerifyHtmlTest, ShowsWhatDiffers) {
    const auto sources = Tracker();
    ASSERT_EQ(LoadAndVerify(sources), 0);
    Damage("UPDATE bug SET title = 'changed & more' WHERE source_id = 'C-1'");
    EXPECT_NE(Verify(sources), 0);
    EXPECT_THAT(Page(),
                AllOf(HasSubstr("<p class=\"state\">Not verified</p>"),
                      HasSubstr("bug, title: the values differ"), HasSubstr("changed &amp; more")));
}

TEST_P(VerifyHtmlTest, SaysThatSourcesWereNeverLoaded) {
    EXPECT_NE(Verify(Basics()), 0);
    EXPECT_THAT(Page(), HasSubstr("2 of 2 sources of records were not loaded to the end"));
}

TEST_P(VerifyHtmlTest, SaysBeforeTheWorkThatItCannotBeWritten) {
    m_verifyOptions.html = m_folder.File("missing/page.html");
    EXPECT_THROW(Verify(Basics()), std::system_error);
}

TEST_P(VerifyHtmlTest, DoesNotShareItsFileWithTheReport) {
    m_verifyOptions.report = m_verifyOptions.html;
    EXPECT_THROW(Verify(Basics()), UsageError);
}

TEST_P(VerifyHtmlTest, LeavesNoPageWhenTheComparisonFails) {
    EXPECT_ANY_THROW(Verify({Records("r.xml", {{{"title", "without configuration"}}})}));
    EXPECT_EQ(Page(), "");
}

}  // namespace

}  // namespace tool
