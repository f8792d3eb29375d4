#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "verify/verify_fixture.h"

// What an import does not take, or not as the source means it.
namespace tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class VerifyUnimportedTest : public OnEachEngine<VerifyFixture> {};

TEST_P(VerifyUnimportedTest, MalformedRecordsAreNotInTheDatabase) {
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

TEST_P(VerifyUnimportedTest, WhatIsNotReadAsARecordIsADifference) {
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

TEST_P(VerifyUnimportedTest, APacketThatIsCutShortIsADifference) {
    const auto sources =
        Together({Configuration("configuration.xml", "record", "bug", "source_id")},
                 {m_folder.Write("bugs.xml", "<records>" + RecordXml(kBug))});
    Load(sources);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("||||the packet is cut short: the element <records>"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 difference found.\n"));
}

TEST_P(VerifyUnimportedTest, ARecordBeyondALimitIsNotCompared) {
    const auto sources = Bugs("bugs", {{{"source_id", "C-1"}, {"title", "<a><b>One</b></a>"}}});
    m_verifyOptions.limits.depth = 3;
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), HasSubstr("--max-depth"));
}

TEST_P(VerifyUnimportedTest, DataThatNoImportTakesIsADifference) {
    const auto sources = Bugs("bugs", {kBug}, "", "records");
    Load(sources);
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_EQ(Differences(),
              "||||not imported: import_data is \"records\"; it must be record, history or "
              "attachments");
}

TEST_P(VerifyUnimportedTest, AFieldThatTheTypeLacksIsADifference) {
    const auto sources = Bugs("bugs", {kBug});
    Load(sources);
    const auto update = Bugs("update", {{{"source_id", "C-1"}, {"colour", "red"}}}, kUpdate);
    EXPECT_EQ(Load(update), 1);
    Verify(Together(sources, update));
    EXPECT_EQ(Differences(), "BUG00000001|colour|red||bug has no such field");
}

TEST_P(VerifyUnimportedTest, AReferenceToNothingSaysSo) {
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

TEST_P(VerifyUnimportedTest, HistoryLinesWithACommentAreMissing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"},
                                  {"title", "One"},
                                  {"log",
                                   "h1\t2020-01-01\tann\tsubmit\tnone\tNEW\twhy\n"
                                   "h2\t2020-01-02\tann\topen\tNEW\tOPEN"}}}),
              1);
    EXPECT_EQ(Differences(),
              "BUG00000001|log, entry h1|2020-01-01 00:00:00\tann\tsubmit\tnone\tNEW\twhy||");
}

TEST_P(VerifyUnimportedTest, HistoryBeyondTheImportersLimitIsMissing) {
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

TEST_P(VerifyUnimportedTest, TheRestOfAnIncompleteAttachmentIsMissing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"},
                                  {"title", "One"},
                                  {"files", "a1\nb.txt\n5\nsecond\na2\nc.txt"}}}),
              1);
    EXPECT_EQ(Differences(), "BUG00000001|files|c.txt||incomplete: an attachment takes four lines");
}

TEST_P(VerifyUnimportedTest, ASizeThatTheSourceDeclaresWronglyIsADifference) {
    LoadAndVerifyBugs(
        {{{"source_id", "C-1"}, {"title", "One"}, {"files", "a1\nb.txt\n6\nsecond"}}});
    EXPECT_EQ(Differences(), "BUG00000001|files, b.txt, declared size|6|5|");
}

TEST_P(VerifyUnimportedTest, AFileThatIsGoneIsADifference) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::remove(m_folder.File("files/b.txt"));
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("BUG00000001|files, b.txt, content||"));
    EXPECT_THAT(Differences(), HasSubstr("No such file"));
}

TEST_P(VerifyUnimportedTest, AFileThatChangedIsADifference) {
    const auto sources = Tracker();
    Load(sources);
    std::ofstream(m_folder.File("files/b.txt")) << "OTHER";
    EXPECT_EQ(Verify(sources), 1);
    EXPECT_THAT(Differences(), StartsWith("BUG00000001|files, b.txt, content|"));
}

TEST_P(VerifyUnimportedTest, WhatTheDecodingChangesIsADifference) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "a &amp;lt; b"}}}), 1);
    EXPECT_THAT(Differences(), StartsWith("|title|||"));
    EXPECT_THAT(Shown(), EndsWith("NOT verified: 1 of 6 records differs.\n"));
}

ON_EACH_ENGINE(VerifyUnimportedTest);

}  // namespace
}  // namespace tool
