#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "verify/verify_fixture.h"

// What several sources say of one record, one after the other.
namespace tool {
namespace {

using testing::HasSubstr;

constexpr const char* kReplace = "<updaterecord name=\"TRUE\"/><replacereflist name=\"TRUE\"/>";

class VerifyUpdatesTest : public OnEachEngine<VerifyFixture> {};

TEST_P(VerifyUpdatesTest, AnUpdateReplacesWhatItSpeaksOf) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"votes", "1"}, {"owner", "ann"}}});
    EXPECT_EQ(
        LoadAndVerifyMore(Bugs(
            "update", {{{"source_id", "C-1"}, {"votes", "blank"}, {"owner", "bob"}}}, kUpdate)),
        0)
        << Shown();
    Damage("UPDATE bug SET votes = 1, owner = 1, title = 'X'");
    Verify(m_sources);
    EXPECT_EQ(Differences(),
              "BUG00000001|title|One|X|\n"
              "BUG00000001|votes|blank|1|\n"
              "BUG00000001|owner|bob|ann|");
}

TEST_P(VerifyUpdatesTest, ADifferenceNamesTheSourceThatSpokeLast) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"votes", "1"}}});
    LoadAndVerifyMore(Bugs("update", {{{"source_id", "C-1"}, {"votes", "2"}}}, kUpdate));
    Damage("UPDATE bug SET votes = 1");
    Verify(m_sources);
    EXPECT_THAT(Shown(), HasSubstr("differs: " + m_folder.File("update.xml") +
                                   ", record 1 (C-1), line 3: bug BUG00000001, votes: source "
                                   "\"2\", database \"1\"\n"));
}

TEST_P(VerifyUpdatesTest, ListsGrowByUpdates) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue"}}});
    EXPECT_EQ(LoadAndVerifyMore(Bugs(
                  "update", {{{"source_id", "C-1"}, {"keywords", "red,,blue , red"}}}, kUpdate)),
              0)
        << Shown();
    Damage("DELETE FROM bug__keywords WHERE target = 1");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|blue,red|blue|");
}

TEST_P(VerifyUpdatesTest, TheOrderOfAListThatWasNotReplacedDoesNotCount) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    Damage(
        "UPDATE bug__keywords SET position = 9 WHERE target = 3;"
        "UPDATE bug__keywords SET position = 0 WHERE target = 1;"
        "UPDATE bug__keywords SET position = 1 WHERE target = 3");
    EXPECT_EQ(Verify(m_sources), 0) << Shown();
}

TEST_P(VerifyUpdatesTest, ListsAreReplaced) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    EXPECT_EQ(LoadAndVerifyMore(
                  Bugs("update", {{{"source_id", "C-1"}, {"keywords", "green,red"}}}, kReplace)),
              0)
        << Shown();
    Damage("UPDATE bug__keywords SET position = 9 WHERE target = 2");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|green,red|red,green|in another order");
}

TEST_P(VerifyUpdatesTest, AReplacedListCanBeEmpty) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    EXPECT_EQ(
        LoadAndVerifyMore(Bugs("update", {{{"source_id", "C-1"}, {"keywords", " , "}}}, kReplace)),
        0)
        << Shown();
    Damage("INSERT INTO bug__keywords (record, position, target) VALUES (1, 1, 1)");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords||red|");
}

TEST_P(VerifyUpdatesTest, TheOrderOfAReplacedListCountsWhoeverMadeTheRecord) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    const auto update =
        Bugs("update", {{{"source_id", "C-1"}, {"keywords", "green,red"}}}, kReplace);
    LoadAndVerifyMore(update);
    Damage("UPDATE bug__keywords SET position = 9 WHERE target = 2");
    Verify(update);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|green,red|red,green|in another order");
}

TEST_P(VerifyUpdatesTest, WhatOtherSourcesBroughtIsNoDifferenceWhereTheseOnlyAdd) {
    const auto sources = Tracker();
    Load(sources);
    const auto more = Together(
        Bugs("update", {{{"source_id", "C-1"}, {"votes", "9"}, {"keywords", "green"}}}, kUpdate),
        Together(
            Bugs("entries",
                 {{{"source_id", "C-1"}, {"history", "h4\t2020-01-01 12:00:00\teve\tx\ty\tz"}}}, "",
                 "history"),
            Bugs("file", {{{"source_id", "C-1"}, {"files", "a3\nb.txt\n5\nagain\n"}}}, "",
                 "attachments")));
    EXPECT_EQ(Load(more), 0) << Said();
    EXPECT_EQ(Verify(more), 0) << Shown();
    EXPECT_EQ(Verify(Together(sources, more)), 0) << Shown();
}

TEST_P(VerifyUpdatesTest, WhatSourcesAddIsLookedForAmongWhatIsThere) {
    Load(Tracker());
    const auto more = Together(
        Bugs("update", {{{"source_id", "C-1"}, {"keywords", "green"}}}, kUpdate),
        Bugs("entries", {{{"source_id", "C-1"}, {"history", "h4\t2021-01-01\te\tx\ty\tz"}}}, "",
             "history"));
    Load(more);
    Damage("DELETE FROM bug__keywords WHERE target = 2");
    Damage("DELETE FROM zt_history WHERE user_name = 'e'");
    Verify(more);
    EXPECT_EQ(Differences(),
              "BUG00000001|keywords|green|red,blue|\n"
              "BUG00000001|log, entry h4|2021-01-01 00:00:00\te\tx\ty\tz||");
}

TEST_P(VerifyUpdatesTest, AnAttachmentTakesThePlaceOfOneOfItsName) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::create_directory(m_folder.File("files/new"));
    std::ofstream(m_folder.File("files/new/A.TXT")) << "newer";
    const auto more = Bugs("file", {{{"source_id", "C-1"}, {"files", "a3\nnew/A.TXT\n5\nnew\n"}}},
                           "", "attachments");
    EXPECT_EQ(LoadAndVerify(Together(sources, more)), 0) << Shown();
    EXPECT_EQ(Query("SELECT filename FROM zt_attachment ORDER BY dbid"), "b.txt\nA.TXT");
}

TEST_P(VerifyUpdatesTest, AMendedRecordIsVerifiedWithItsFirstForm) {
    const auto sources = Bugs("bugs", {{{"source_id", "C-1"},
                                        {"title", "One"},
                                        {"votes", "many"},
                                        {"log", "1\t2020-01-01\tann\tsubmit\tnone\tNEW"}}});
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Differences(), "||||missing from the database");
    EXPECT_EQ(
        LoadAndVerifyMore(Bugs("mended", {{{"source_id", "C-1"},
                                           {"title", "One"},
                                           {"votes", "12"},
                                           {"log", "1\t2020-01-01\tann\tsubmit\tnone\tNEW"}}})),
        0);
    EXPECT_EQ(Verify(Together(sources, m_sources)), 0) << Shown();
}

TEST_P(VerifyUpdatesTest, ListsAndFilesOfAMendedRecordBeginAnew) {
    const auto sources = Bugs("bugs", {{{"source_id", "C-1"},
                                        {"title", "One"},
                                        {"votes", "many"},
                                        {"keywords", "blue,green"},
                                        {"files", "1\nb.txt\n5\nfirst"}}});
    EXPECT_EQ(LoadAndVerify(m_sources = Basics()), 0);
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(LoadAndVerifyMore(Bugs("mended", {{{"source_id", "C-1"},
                                                 {"title", "One"},
                                                 {"votes", "12"},
                                                 {"keywords", "red,blue"},
                                                 {"files", "1\nsub/a.txt\n5\nmended"}}})),
              0)
        << Shown();
    EXPECT_EQ(Verify(Together(sources, m_sources)), 0) << Shown();
}

TEST_P(VerifyUpdatesTest, WhatAMendedRecordLeavesOutIsStillMissing) {
    const auto sources =
        Bugs("bugs", {{{"source_id", "C-1"}, {"title", "One"}, {"votes", "many"}}});
    EXPECT_EQ(Load(sources), 1);
    LoadAndVerifyMore(Bugs("mended", {{{"source_id", "C-1"}, {"title", "One"}}}));
    Verify(Together(sources, m_sources));
    EXPECT_EQ(Differences(), "BUG00000001|votes|many||");
}

TEST_P(VerifyUpdatesTest, SourcesThatRepeatCountOnceAsInALoad) {
    const auto sources = Tracker();
    Load(sources);
    EXPECT_EQ(Verify(Together(sources, sources)), 0) << Shown();
    EXPECT_THAT(Shown(), HasSubstr("history.xml: read already, and passed over as in a load"));
}

ON_EACH_ENGINE(VerifyUpdatesTest);

}  // namespace
}  // namespace tool
