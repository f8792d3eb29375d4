#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tool/io/source_error.h"
#include "tool/process/usage_error.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

constexpr const char* kUpdate = "<updaterecord name=\"TRUE\"/>";
constexpr const char* kReplace = "<updaterecord name=\"TRUE\"/><replacereflist name=\"TRUE\"/>";

class VerifyTest : public VerifyFixture {
  protected:
    // Loads the basics and these bugs, and compares.
    int LoadAndVerifyBugs(const std::vector<Fields>& bugs, std::string_view more = "") {
        return LoadAndVerify(m_sources = Together(Basics(), Bugs("bugs", bugs, more)));
    }
    // Loads something more and compares all of it.
    int LoadAndVerifyMore(const std::vector<std::string>& more) {
        return LoadAndVerify(m_sources = Together(m_sources, more));
    }

    std::vector<std::string> m_sources;
};

const Fields kBug = {{"source_id", "C-1"}, {"title", "One"}};

TEST_F(VerifyTest, ACleanLoadIsVerified) {
    EXPECT_EQ(LoadAndVerify(Tracker()), 0) << Shown();
    EXPECT_THAT(Shown(), EndsWith("Verified: everything in the sources is in the database.\n"));
    EXPECT_EQ(Differences(), "");
}

TEST_F(VerifyTest, WhatWasComparedIsCounted) {
    LoadAndVerify(Tracker());
    EXPECT_THAT(Shown(),
                StartsWith("         compared  equal  different  missing  fields  references  "
                           "history  attachments  duplicates\n"
                           "user            2      2          0        0       4           0  "
                           "      0            0           0\n"));
    EXPECT_THAT(Shown(),
                HasSubstr("\nbug             2      2          0        0       7           3  "
                          "      3            2           1\n"));
}

TEST_F(VerifyTest, TheDatabaseStaysAsItIs) {
    const auto sources = Tracker();
    Load(sources);
    const auto read = [this] {
        std::ifstream file(m_database, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string before = read();
    EXPECT_EQ(Verify(sources), 0);
    EXPECT_EQ(read(), before);
}

TEST_F(VerifyTest, AFileThatMayNotBeWrittenToCanBeVerified) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::permissions(m_database, std::filesystem::perms::owner_read);
    EXPECT_EQ(Verify(sources), 0) << Shown();
}

TEST_F(VerifyTest, StatesThatAreNotImportedSayNothing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"state", "OPEN"}}}), 0)
        << Shown();
}

TEST_F(VerifyTest, WithoutAStateANewRecordIsInTheFirst) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"state", "OPEN"}}});
    Damage("UPDATE bug SET state = 'OPEN'");
    EXPECT_EQ(Verify(m_sources), 1);
    EXPECT_EQ(Differences(), "BUG00000001|state|NEW|OPEN|not the state that new records begin in");
}

TEST_F(VerifyTest, AnUpdateReplacesWhatItSpeaksOf) {
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

TEST_F(VerifyTest, ADifferenceNamesTheSourceThatSpokeLast) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"votes", "1"}}});
    LoadAndVerifyMore(Bugs("update", {{{"source_id", "C-1"}, {"votes", "2"}}}, kUpdate));
    Damage("UPDATE bug SET votes = 1");
    Verify(m_sources);
    EXPECT_THAT(Shown(), HasSubstr("differs: " + m_folder.File("update.xml") +
                                   ", record 1 (C-1), line 3: bug BUG00000001, votes: source "
                                   "\"2\", database \"1\"\n"));
}

TEST_F(VerifyTest, ListsGrowByUpdates) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue"}}});
    EXPECT_EQ(LoadAndVerifyMore(Bugs(
                  "update", {{{"source_id", "C-1"}, {"keywords", "red,,blue , red"}}}, kUpdate)),
              0)
        << Shown();
    Damage("DELETE FROM bug__keywords WHERE target = 1");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|blue,red|blue|");
}

TEST_F(VerifyTest, TheOrderOfAListThatWasNotReplacedDoesNotCount) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    Damage(
        "UPDATE bug__keywords SET position = 9 WHERE target = 3;"
        "UPDATE bug__keywords SET position = 0 WHERE target = 1;"
        "UPDATE bug__keywords SET position = 1 WHERE target = 3");
    EXPECT_EQ(Verify(m_sources), 0) << Shown();
}

TEST_F(VerifyTest, ListsAreReplaced) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    EXPECT_EQ(LoadAndVerifyMore(
                  Bugs("update", {{{"source_id", "C-1"}, {"keywords", "green,red"}}}, kReplace)),
              0)
        << Shown();
    Damage("UPDATE bug__keywords SET position = 9 WHERE target = 2");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|green,red|red,green|in another order");
}

TEST_F(VerifyTest, AReplacedListCanBeEmpty) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    EXPECT_EQ(
        LoadAndVerifyMore(Bugs("update", {{{"source_id", "C-1"}, {"keywords", " , "}}}, kReplace)),
        0)
        << Shown();
    Damage("INSERT INTO bug__keywords (record, position, target) VALUES (1, 1, 1)");
    Verify(m_sources);
    EXPECT_EQ(Differences(), "BUG00000001|keywords||red|");
}

TEST_F(VerifyTest, TheOrderOfAReplacedListCountsWhoeverMadeTheRecord) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"keywords", "blue,red"}}});
    const auto update =
        Bugs("update", {{{"source_id", "C-1"}, {"keywords", "green,red"}}}, kReplace);
    LoadAndVerifyMore(update);
    Damage("UPDATE bug__keywords SET position = 9 WHERE target = 2");
    Verify(update);
    EXPECT_EQ(Differences(), "BUG00000001|keywords|green,red|red,green|in another order");
}

TEST_F(VerifyTest, WhatOtherSourcesBroughtIsNoDifferenceWhereTheseOnlyAdd) {
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

TEST_F(VerifyTest, WhatSourcesAddIsLookedForAmongWhatIsThere) {
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

TEST_F(VerifyTest, AnAttachmentTakesThePlaceOfOneOfItsName) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::create_directory(m_folder.File("files/new"));
    std::ofstream(m_folder.File("files/new/A.TXT")) << "newer";
    const auto more = Bugs("file", {{{"source_id", "C-1"}, {"files", "a3\nnew/A.TXT\n5\nnew\n"}}},
                           "", "attachments");
    EXPECT_EQ(LoadAndVerify(Together(sources, more)), 0) << Shown();
    EXPECT_EQ(Query("SELECT filename FROM zt_attachment ORDER BY dbid"), "b.txt\nA.TXT");
}

TEST_F(VerifyTest, AMendedRecordIsVerifiedWithItsFirstForm) {
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

TEST_F(VerifyTest, ListsAndFilesOfAMendedRecordBeginAnew) {
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

TEST_F(VerifyTest, WhatAMendedRecordLeavesOutIsStillMissing) {
    const auto sources =
        Bugs("bugs", {{{"source_id", "C-1"}, {"title", "One"}, {"votes", "many"}}});
    EXPECT_EQ(Load(sources), 1);
    LoadAndVerifyMore(Bugs("mended", {{{"source_id", "C-1"}, {"title", "One"}}}));
    Verify(Together(sources, m_sources));
    EXPECT_EQ(Differences(), "BUG00000001|votes|many||");
}

TEST_F(VerifyTest, SourcesThatRepeatCountOnceAsInALoad) {
    const auto sources = Tracker();
    Load(sources);
    EXPECT_EQ(Verify(Together(sources, sources)), 0) << Shown();
    EXPECT_THAT(Shown(), HasSubstr("history.xml: read already, and passed over as in a load"));
}

TEST_F(VerifyTest, FieldsWithoutAnIndexAreSearchedAllTheSame) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "title")},
                 {Records("bugs.xml", {{{"title", "One"}, {"votes", "1"}}, {{"title", "Two"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    ASSERT_EQ(Query("SELECT count(*) FROM sqlite_master WHERE name LIKE 'zt_search%'"), "0");
    Damage("UPDATE bug SET votes = 2; UPDATE bug SET title = 'Tow' WHERE dbid = 2");
    Verify(sources);
    EXPECT_EQ(Differences(), "||||missing from the database\nBUG00000001|votes|1|2|");
}

TEST_F(VerifyTest, ARecordWithoutStatesIsFoundByItsKey) {
    const auto sources = Together({Configuration("configuration.xml", "record", "user", "")},
                                  {Records("users.xml", {{{"login", "ann"}, {"email", "ann@x"}},
                                                         {{"login", "bob"}, {"email", "bob@x"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE user SET email = 'x' WHERE login = 'ann'; DELETE FROM user WHERE dbid = 2");
    Verify(sources);
    EXPECT_EQ(Differences(), "||||missing from the database\nann|email|ann@x|x|");
}

TEST_F(VerifyTest, AReferenceAsOriginalIdIsReadAsAKey) {
    const auto sources = Together(
        {Configuration("users-configuration.xml", "record", "user", "login"),
         Records("users.xml", {{{"login", "2"}}, {{"login", "1"}}}),
         Configuration("bugs-configuration.xml", "record", "bug", "owner")},
        {Records("bugs.xml",
                 {{{"owner", "2"}, {"title", "Two"}}, {{"owner", "1"}, {"title", "One"}}})});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE bug SET owner = 3 - owner");
    EXPECT_EQ(Verify(sources), 1);
}

TEST_F(VerifyTest, BlankInANewRecordIsNoValue) {
    const auto sources =
        Bugs("bugs.xml", {{{"source_id", "C-1"}, {"title", "One"}, {"votes", "blank"}}});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE bug SET votes = 1");
    EXPECT_EQ(Verify(sources), 1);
}

TEST_F(VerifyTest, ARecordWithoutAnOriginalIdCannotBeCompared) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"title", "One"}}}), 1);
    EXPECT_EQ(Differences(), "||||cannot be compared: it has no original id");
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 of 6 records differs.\n"));
}

TEST_F(VerifyTest, SeveralRecordsOfOneOriginalIdCannotBeCompared) {
    const auto sources = Together({Configuration("configuration.xml", "record", "bug", "title")},
                                  {Records("bugs.xml", {{{"title", "One"}}, {{"title", "One"}}})});
    LoadAndVerify(sources);
    const std::string problem =
        "||||cannot be compared: several records of the database have the title \"One\"";
    EXPECT_EQ(Differences(), problem + "\n" + problem);
}

TEST_F(VerifyTest, MalformedRecordsAreNotInTheDatabase) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "source_id")},
                 {m_folder.Write("bugs.xml",
                                 "<records><record><f name=\"source_id\">C-1</f>"
                                 "<f name=\"title\">A & B</f></record>\n"
                                 "<record><f name=\"source_id\">C-2</f>")});
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Shown(), HasSubstr("bugs.xml, record 1 (C-1), line 1: bug: not imported: "));
    EXPECT_THAT(Shown(), HasSubstr("bugs.xml, record 2 (C-2), line 2: bug: not imported: "));
}

TEST_F(VerifyTest, WhatIsNotReadAsARecordIsADifference) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "source_id")},
                 {m_folder.Write("bugs.xml",
                                 "<records><Record></Record>"
                                 "<!-- <record></record> -->"
                                 "</records>")});
    Load(sources);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(),
                StartsWith("||||not imported, since it is not read as a record: <Record>"));
    EXPECT_THAT(Differences(), Not(HasSubstr("\n")));
}

TEST_F(VerifyTest, APacketThatIsCutShortIsADifference) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "source_id")},
                 {m_folder.Write("bugs.xml", "<records>" + RecordXml(kBug))});
    Load(sources);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("||||the packet is cut short: the element <records>"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 difference found.\n"));
}

TEST_F(VerifyTest, ARecordBeyondALimitIsNotCompared) {
    const auto sources = Bugs("bugs", {{{"source_id", "C-1"}, {"title", "<a><b>One</b></a>"}}});
    m_verifyOptions.limits.depth = 3;
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), HasSubstr("--max-depth"));
}

TEST_F(VerifyTest, DataThatNoImportTakesIsADifference) {
    const auto sources = Bugs("bugs", {kBug}, "", "records");
    Load(sources);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Differences(),
              "||||not imported: import_data is \"records\"; it must be record, history or "
              "attachments");
}

TEST_F(VerifyTest, AFieldThatTheTypeLacksIsADifference) {
    const auto sources = Bugs("bugs", {kBug});
    Load(sources);
    const auto update = Bugs("update", {{{"source_id", "C-1"}, {"colour", "red"}}}, kUpdate);
    EXPECT_EQ(Load(update), 1);
    Verify(Together(sources, update));
    EXPECT_EQ(Differences(), "BUG00000001|colour|red||bug has no such field");
}

TEST_F(VerifyTest, AReferenceToNothingSaysSo) {
    const auto sources = Together(Basics(), Bugs("bugs", {kBug}));
    Load(sources);
    const auto update = Bugs(
        "update", {{{"source_id", "C-1"}, {"owner", "eve"}, {"keywords", "red,pink"}}}, kUpdate);
    EXPECT_EQ(Load(update), 1);
    Verify(Together(sources, update));
    EXPECT_EQ(Differences(),
              "BUG00000001|owner|eve||there is no user \"eve\"\n"
              "BUG00000001|keywords|red,pink||there is no keyword \"pink\"");
}

TEST_F(VerifyTest, HistoryLinesWithACommentAreMissing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"},
                                  {"title", "One"},
                                  {"log",
                                   "h1\t2020-01-01\tann\tsubmit\tnone\tNEW\twhy\n"
                                   "h2\t2020-01-02\tann\topen\tNEW\tOPEN"}}}),
              1);
    EXPECT_EQ(Differences(),
              "BUG00000001|log, entry h1|2020-01-01 00:00:00\tann\tsubmit\tnone\tNEW\twhy||");
}

TEST_F(VerifyTest, HistoryBeyondTheImportersLimitIsMissing) {
    std::string log;
    for (int i = 0; i < 503; ++i) {
        log += "h" + std::to_string(i) + "\t2020-01-01\tann\tact " + std::to_string(i) +
               "\tNEW\tNEW\n";
    }
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"log", log}}}), 1);
    EXPECT_EQ(Differences(),
              "BUG00000001|log, entry h501|2020-01-01 00:00:00\tann\tact 501\tNEW\tNEW||\n"
              "BUG00000001|log, entry h502|2020-01-01 00:00:00\tann\tact 502\tNEW\tNEW||");
}

TEST_F(VerifyTest, TheRestOfAnIncompleteAttachmentIsMissing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"},
                                  {"title", "One"},
                                  {"files", "a1\nb.txt\n5\nsecond\na2\nc.txt"}}}),
              1);
    EXPECT_EQ(Differences(), "BUG00000001|files|c.txt||incomplete: an attachment takes four lines");
}

TEST_F(VerifyTest, ASizeThatTheSourceDeclaresWronglyIsADifference) {
    LoadAndVerifyBugs(
        {{{"source_id", "C-1"}, {"title", "One"}, {"files", "a1\nb.txt\n6\nsecond"}}});
    EXPECT_EQ(Differences(), "BUG00000001|files, b.txt, declared size|6|5|");
}

TEST_F(VerifyTest, AFileThatIsGoneIsADifference) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::remove(m_folder.File("files/b.txt"));
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("BUG00000001|files, b.txt, content||"));
    EXPECT_THAT(Differences(), HasSubstr("No such file"));
}

TEST_F(VerifyTest, AFileThatChangedIsADifference) {
    const auto sources = Tracker();
    Load(sources);
    std::ofstream(m_folder.File("files/b.txt")) << "OTHER";
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("BUG00000001|files, b.txt, content|"));
}

TEST_F(VerifyTest, AttachmentsNeedTheirFolder) {
    const auto packets = Tracker();
    const auto inRecords =
        Bugs("more", {{{"source_id", "C-3"}, {"title", "T"}, {"files", "1\nb.txt\n5\n"}}});
    m_verifyOptions.attachments.clear();
    for (const auto& sources : {packets, inRecords}) {
        try {
            Verify(sources);
            ADD_FAILURE() << "verified without the files";
        } catch (const SourceError& error) {
            EXPECT_THAT(error.what(), EndsWith(": attachments are imported only from a folder that "
                                               "--attachments names"));
        }
    }
    m_verifyOptions.attachments = "/nowhere";
    EXPECT_THROW(Verify(packets), UsageError);
}

TEST_F(VerifyTest, RecordsNeedAConfiguration) {
    EXPECT_THROW(Verify({Records("bugs.xml", {kBug})}), SourceError);
    EXPECT_THROW(Verify({Configuration("c.xml", "record", "bugs", "source_id")}), SourceError);
}

TEST_F(VerifyTest, WhatTheDecodingChangesIsADifference) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "a &amp;lt; b"}}}), 1);
    EXPECT_THAT(Differences(), StartsWith("|title|||"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 of 6 records differs.\n"));
}

TEST_F(VerifyTest, AtMostFiftyDifferencesAreShown) {
    std::vector<Fields> bugs;
    for (int i = 0; i < 60; ++i) {
        bugs.push_back({{"source_id", std::to_string(i)}, {"title", "T"}});
    }
    LoadAndVerifyBugs(bugs);
    Damage("UPDATE bug SET title = 'U'");
    Verify(m_sources);
    const std::string shown = Shown();
    std::size_t lines = 0;
    for (auto at = shown.find("differs: "); at != std::string::npos;
         at = shown.find("differs: ", at + 1)) {
        ++lines;
    }
    EXPECT_EQ(lines, 51U);
    EXPECT_THAT(shown, HasSubstr("differs: further differences are counted; --report lists all\n"));
    EXPECT_THAT(shown, EndsWith("NOT verified: 60 of 65 records differ.\n"));
    const std::string differences = Differences();
    EXPECT_EQ(std::count(differences.begin(), differences.end(), '\n'), 59);
}

TEST_F(VerifyTest, TheReportHasTheNumbers) {
    LoadAndVerifyBugs({kBug});
    Damage("UPDATE bug SET title = 'X'; DELETE FROM keyword");
    Verify(m_sources);
    const auto report = nlohmann::json::parse(Report());
    EXPECT_EQ(report.at("read"), 6);
    EXPECT_EQ(report.at("compared"), 3);
    EXPECT_EQ(report.at("differing"), 1);
    EXPECT_EQ(report.at("missing"), 3);
    EXPECT_EQ(report.at("types").size(), 3U);
    EXPECT_EQ(report.at("differences").size(), 4U);
}

TEST_F(VerifyTest, QuietLeavesTheDifferencesOnly) {
    LoadAndVerifyBugs({kBug});
    m_verifyOptions.quiet = true;
    EXPECT_EQ(Verify(m_sources), 0);
    EXPECT_EQ(Shown(), "");
    Damage("UPDATE bug SET title = 'X'");
    EXPECT_EQ(Verify(m_sources), 1);
    EXPECT_THAT(Shown(), StartsWith("differs: "));
    EXPECT_THAT(Shown(), Not(HasSubstr("NOT verified")));
}

}  // namespace
}  // namespace tool
