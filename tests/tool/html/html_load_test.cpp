#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <system_error>

#include "load_fixture.h"
#include "tool/commands/check_command.h"
#include "tool/process/usage_error.h"

namespace tool {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

class HtmlLoadTest : public OnEachEngine<LoadFixture> {
  protected:
    HtmlLoadTest() { m_options.html = m_folder.File("page.html"); }

    std::string Page() const {
        std::ostringstream content;
        content << std::ifstream(m_options.html).rdbuf();
        return content.str();
    }

    std::string Bugs() { return Configuration("bugs.xml", "record", "bug", "source_id"); }
};

ON_EACH_ENGINE(HtmlLoadTest);

TEST_P(HtmlLoadTest, WritesAPageAboutACleanLoad) {
    EXPECT_EQ(Load({Bugs(), Records("r.xml", {{{"source_id", "a"}, {"title", "A"}},
                                              {{"source_id", "b"}, {"title", "B"}}})}),
              0);
    EXPECT_THAT(Page(), AllOf(HasSubstr("All 2 records of the sources were loaded"),
                              HasSubstr("No record was rejected."),
                              HasSubstr("bug <span class=\"kind\">records</span>")));
}

TEST_P(HtmlLoadTest, TellsWhereAndWhyRecordsWereRejected) {
    EXPECT_EQ(Load({Bugs(), Records("r.xml", {{{"source_id", "a"}, {"title", "A"}},
                                              {{"source_id", "b"}, {"votes", "many"}}})}),
              1);
    EXPECT_THAT(
        Page(),
        AllOf(HasSubstr("1 of 2 records was rejected"), HasSubstr("cannot take &quot;many&quot;"),
              HasSubstr(R"(data-label="Record">2</td>)"), HasSubstr(R"(data-label="Line">4</td>)"),
              HasSubstr(R"(data-label="Source id">b</td>)")));
}

TEST_P(HtmlLoadTest, TellsThatEverythingWasLoadedBefore) {
    const std::string bugs = Bugs();
    const std::string records = Records("r.xml", {{{"source_id", "a"}, {"title", "A"}}});
    Load({bugs, records});
    EXPECT_EQ(Load({bugs, records}), 0);
    EXPECT_THAT(Page(), HasSubstr("The one record has been loaded before"));
}

TEST_P(HtmlLoadTest, IsWrittenWhenALoadFails) {
    const std::string records = Records("r.xml", {{{"source_id", "a"}, {"title", "A"}}});
    EXPECT_ANY_THROW(Load({records}));
    EXPECT_THAT(Page(), AllOf(HasSubstr("Not finished"),
                              HasSubstr("no configuration packet comes before these records")));
}

TEST_P(HtmlLoadTest, IsWrittenWhenALoadStopsForTooManyRejects) {
    m_options.maxRejects = 0;
    Load({Bugs(), Records("r.xml", {{{"source_id", "a"}}, {{"source_id", "b"}, {"title", "B"}}})});
    EXPECT_THAT(Page(), AllOf(HasSubstr("Not finished"), HasSubstr("Stopped, since more than 0")));
}

TEST_P(HtmlLoadTest, TellsWhatARehearsalFound) {
    m_options.database = m_database;
    m_options.sources = {Bugs(),
                         Records("r.xml", {{{"source_id", "a"}, {"title", "A"}, {"title", "B"}},
                                           {{"source_id", "b"}, {"votes", "many"}}})};
    std::ostringstream said;
    EXPECT_EQ(RunCheck(m_options, said, said), 1);
    EXPECT_THAT(Page(),
                AllOf(HasSubstr("Would lose data"),
                      HasSubstr("A load would reject 1 of 2 records and lose 1 detail silently."),
                      HasSubstr("fields named more than once in a record</span></h3>")));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(HtmlLoadTest, TellsWhatALoadLostSilently) {
    EXPECT_EQ(Load({Bugs(), Records("r.xml", {{{"source_id", "a"}, {"title", "A"}, {"title", "B"}},
                                              {{"source_id", "b"}, {"title", "B"}}})}),
              0);
    EXPECT_THAT(Page(), AllOf(HasSubstr("Loaded with losses"),
                              HasSubstr("fields named more than once in a record</span></h3>")));
    EXPECT_THAT(Said(), Not(HasSubstr("named again")));
}

TEST_P(HtmlLoadTest, SaysBeforeTheLoadThatItCannotBeWritten) {
    m_options.html = m_folder.File("missing/page.html");
    EXPECT_THROW(Load({Bugs(), Records("r.xml", {{{"source_id", "a"}, {"title", "A"}}})}),
                 std::system_error);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(HtmlLoadTest, DoesNotShareItsFileWithTheReport) {
    m_options.report = m_folder.File("./page.html");
    EXPECT_THROW(Load({Bugs()}), UsageError);
    EXPECT_EQ(Page(), "");
}

TEST_P(HtmlLoadTest, ReplacesAnEarlierPageAndLeavesNothingElse) {
    m_folder.Write("page.html", "earlier");
    const std::string bugs = Bugs();
    const std::size_t files = m_folder.FileCount();
    Load({bugs});
    EXPECT_THAT(Page(), Not(HasSubstr("earlier</")));
    EXPECT_THAT(Page(), HasSubstr("<!DOCTYPE html>"));
    EXPECT_EQ(m_folder.FileCount(), files);
}

}  // namespace

}  // namespace tool
