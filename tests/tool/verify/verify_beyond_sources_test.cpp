#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "verify/verify_fixture.h"

// What no source can contradict: faults of the database itself, and with --exact what the database
// holds beyond the sources.

namespace tool {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

class DatabaseFaultTest : public OnEachEngine<VerifyFixture> {};

// Values that only a file's columns can hold.
class ForeignStorageTest : public VerifyFixture {};

TEST_P(DatabaseFaultTest, IsFoundInRecordsThatTheSourcesDoNotSpeakOf) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    Damage("UPDATE bug SET id = 'BvG00000002' WHERE dbid = 2");
    EXPECT_EQ(Verify(Basics()), 1);
    EXPECT_EQ(Differences(), "");
    EXPECT_EQ(Faults(), "bug|BvG00000002|id|BvG00000002|the display id of its dbid is BUG00000002");
    EXPECT_THAT(Shown(), HasSubstr("damaged: bug BvG00000002, id: \"BvG00000002\" (the display id "
                                   "of its dbid is BUG00000002)\n"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 fault in the database itself.\n"));
}

TEST_F(ForeignStorageTest, IsReportedBesideDifferences) {
    const auto sources = Tracker();
    ASSERT_EQ(Load(sources), 0) << Said();
    Damage("UPDATE bug SET votes = '7 or so' WHERE dbid = 2");
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Differences(), "BUG00000002|votes||7|");
    EXPECT_EQ(Faults(),
              "bug|BUG00000002|votes|7 or so|stored as a text, where a whole number belongs");
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 of 7 records differs; 1 fault in the database "
                                  "itself.\n"));
}

TEST_P(DatabaseFaultTest, IsAHistoryEntryInAnotherField) {
    const auto sources = Tracker();
    ASSERT_EQ(Load(sources), 0) << Said();
    Damage("UPDATE zt_history SET field = 'title' WHERE entry = 1");
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Faults(),
              "bug|BUG00000001|log, entry 1, field|title|the history of bug stands in log");
}

TEST_F(ForeignStorageTest, IsTextThatEqualsANumber) {
    const auto sources = Tracker();
    ASSERT_EQ(Load(sources), 0) << Said();
    Damage("UPDATE bug SET votes = '7 or so' WHERE dbid = 1");
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Faults(), HasSubstr("bug|BUG00000001|votes|7 or so|"));
}

TEST_P(DatabaseFaultTest, IsNotWhatNoAttachmentNeedsAnyMore) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    Damage("DELETE FROM zt_attachment WHERE filename = 'b.txt'");
    EXPECT_EQ(Verify(Basics()), 0);
    EXPECT_THAT(Shown(),
                HasSubstr("1 content of 5 bytes in all belongs to no attachment any more\n"));
}

TEST_P(DatabaseFaultTest, AtMostFiftyAreShown) {
    std::vector<Fields> bugs;
    for (int i = 0; i < 60; ++i) {
        bugs.push_back({{"source_id", std::to_string(i)}, {"title", "T"}});
    }
    ASSERT_EQ(Load(Together(Basics(), Bugs("bugs", bugs))), 0) << Said();
    Damage("UPDATE bug SET zt_version = 0");
    Verify(Basics());
    EXPECT_THAT(Shown(), HasSubstr("damaged: further faults of the database are counted; --report "
                                   "lists all\n"));
    EXPECT_THAT(Shown(), Not(HasSubstr("BUG00000051")));
    const std::string faults = Faults();
    EXPECT_EQ(std::count(faults.begin(), faults.end(), '\n'), 59);
}

TEST_P(DatabaseFaultTest, StandsOnThePage) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    Damage("UPDATE bug SET id = 'BvG00000002' WHERE dbid = 2");
    m_verifyOptions.html = m_folder.File("page.html");
    Verify(Basics());
    std::ifstream file(m_verifyOptions.html);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(page, HasSubstr("The database itself is damaged: one fault was found."));
    EXPECT_THAT(page, HasSubstr("the display id of its dbid is BUG00000002"));
}

ON_EACH_ENGINE(DatabaseFaultTest);

class ExactVerifyTest : public OnEachEngine<VerifyFixture> {
  protected:
    ExactVerifyTest() { m_verifyOptions.exact = true; }
};

TEST_P(ExactVerifyTest, FindsNothingBeyondTheSourcesInACleanLoad) {
    EXPECT_EQ(LoadAndVerify(Tracker()), 0) << Shown();
    EXPECT_THAT(Shown(),
                EndsWith("Verified: everything in the sources is in the database, and nothing else."
                         "\n"));
}

TEST_P(ExactVerifyTest, FindsRecordsThatNoSourceSpeaksOf) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    Damage("INSERT INTO \"user\" (dbid, login) VALUES (9, 'eve')");
    EXPECT_EQ(Verify(Basics()), 1);
    EXPECT_EQ(Differences(),
              "eve||||in the database only: no source speaks of it\n"
              "BUG00000001||||in the database only: no source speaks of it\n"
              "BUG00000002||||in the database only: no source speaks of it");
    EXPECT_THAT(Shown(), HasSubstr("\ndiffers: bug BUG00000002: in the database only: no source "
                                   "speaks of it\n"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 3 records of the database are in no source.\n"));
    const auto report = nlohmann::json::parse(Report());
    EXPECT_EQ(report.at("extra"), 3);
    EXPECT_EQ(report.at("types").at(0).at("extra"), 1);
    EXPECT_EQ(report.at("differences").at(0).at("file"), "");
    EXPECT_EQ(report.at("differences").at(0).at("record"), 0);
}

TEST_P(ExactVerifyTest, FindsWhatNoSourceGivesInRecordsThatTheyUpdate) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    const auto updates =
        Together(Basics(), Bugs("updates",
                                {{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "red"}},
                                 {{"source_id", "C-2"}, {"title", "Two"}}},
                                kUpdate));
    EXPECT_EQ(Verify(updates), 1);
    EXPECT_EQ(Differences(),
              "BUG00000001|state|NEW|OPEN|not the state that new records begin in\n"
              "BUG00000001|votes||7|\n"
              "BUG00000001|owner||ann|\n"
              "BUG00000001|keywords|red|red,blue|\n"
              "BUG00000001|log||2020-01-01 10:00:00\tann\tsubmit\tnone\tNEW|\n"
              "BUG00000001|log||2020-01-01 10:00:00\tbob\topen\tNEW\tOPEN|\n"
              "BUG00000001|log||2020-01-02 00:00:00\tann\tclose\tOPEN\tCLOSED|\n"
              "BUG00000001|files||a.txt|\n"
              "BUG00000001|files||b.txt|\n"
              "BUG00000002|state|NEW|CLOSED|not the state that new records begin in\n"
              "BUG00000002|duplicate of||BUG00000001|");
    m_verifyOptions.exact = false;
    EXPECT_EQ(Verify(updates), 0) << Shown();
}

TEST_P(ExactVerifyTest, IsContentWithMendedRejects) {
    m_options.rejects = m_folder.File("rejects");
    const auto bad = Together(Basics(), Bugs("bugs", {{{"source_id", "C-1"}, {"title", "One"}},
                                                      {{"source_id", "C-2"}, {"title", ""}}}));
    ASSERT_EQ(Load(bad), 1);
    m_options.rejects.clear();
    const auto mended = Together(bad, Bugs("mended", {{{"source_id", "C-2"}, {"title", "Two"}}}));
    Load(mended);
    EXPECT_EQ(Verify(mended), 0) << Shown();
}

TEST_P(ExactVerifyTest, StandsOnThePage) {
    ASSERT_EQ(Load(Tracker()), 0) << Said();
    m_verifyOptions.html = m_folder.File("page.html");
    Verify(Basics());
    std::ifstream file(m_verifyOptions.html);
    const std::string page{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(page, HasSubstr("2 records of the database are in no source."));
    EXPECT_THAT(page, HasSubstr("bug: in the database only: no source speaks of it"));
}

ON_EACH_ENGINE(ExactVerifyTest);

}  // namespace

}  // namespace tool
