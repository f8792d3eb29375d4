#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tool/io/source_error.h"
#include "tool/process/usage_error.h"
#include "verify/verify_fixture.h"

namespace tool {
namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class VerifyTest : public OnEachEngine<VerifyFixture> {};

TEST_P(VerifyTest, ACleanLoadIsVerified) {
    EXPECT_EQ(LoadAndVerify(Tracker()), 0) << Shown();
    EXPECT_THAT(Shown(), EndsWith("Verified: everything in the sources is in the database.\n"));
    EXPECT_EQ(Differences(), "");
}

TEST_P(VerifyTest, WhatWasComparedIsCounted) {
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

TEST_P(VerifyTest, TheDatabaseStaysAsItIs) {
    const auto sources = Tracker();
    Load(sources);
    const auto read = [this] {
        if (!IsFile()) {
            return Dump();
        }
        std::ifstream file(m_database, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    const std::string before = read();
    EXPECT_EQ(Verify(sources), 0);
    EXPECT_EQ(read(), before);
}

using VerifyFileTest = VerifyFixture;

TEST_F(VerifyFileTest, MayBeOneThatMayNotBeWrittenTo) {
    const auto sources = Tracker();
    Load(sources);
    std::filesystem::permissions(m_database, std::filesystem::perms::owner_read);
    EXPECT_EQ(Verify(sources), 0) << Shown();
}

TEST_P(VerifyTest, StatesThatAreNotImportedSayNothing) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"state", "OPEN"}}}), 0)
        << Shown();
}

// The importer folds case by Unicode, for which the long s is an s.
TEST_P(VerifyTest, AStateIsTakenByItsNameInAnyCase) {
    EXPECT_EQ(LoadAndVerifyBugs({{{"source_id", "C-1"},
                                  {"title", "One"},
                                  {"\xC5\xBF"
                                   "tate",
                                   "OPEN"}}},
                                "<importstate name=\"TRUE\"/>"),
              0)
        << Shown();
    EXPECT_EQ(Query("SELECT state FROM bug"), "OPEN");
}

TEST_P(VerifyTest, WithoutAStateANewRecordIsInTheFirst) {
    LoadAndVerifyBugs({{{"source_id", "C-1"}, {"title", "One"}, {"state", "OPEN"}}});
    Damage("UPDATE bug SET state = 'OPEN'");
    EXPECT_EQ(Verify(m_sources), 1);
    EXPECT_EQ(Differences(), "BUG00000001|state|NEW|OPEN|not the state that new records begin in");
}

TEST_P(VerifyTest, BlankInANewRecordIsNoValue) {
    const auto sources =
        Bugs("bugs.xml", {{{"source_id", "C-1"}, {"title", "One"}, {"votes", "blank"}}});
    EXPECT_EQ(LoadAndVerify(sources), 0) << Shown();
    Damage("UPDATE bug SET votes = 1");
    EXPECT_EQ(Verify(sources), 1);
}

TEST_P(VerifyTest, AttachmentsNeedTheirFolder) {
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

TEST_P(VerifyTest, RecordsNeedAConfiguration) {
    EXPECT_THROW(Verify({Records("bugs.xml", {kBug})}), SourceError);
    EXPECT_THROW(Verify({Configuration("c.xml", "record", "bugs", "source_id")}), SourceError);
}

TEST_P(VerifyTest, AtMostFiftyDifferencesAreShown) {
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

TEST_P(VerifyTest, TheReportHasTheNumbers) {
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

TEST_P(VerifyTest, QuietLeavesTheDifferencesOnly) {
    LoadAndVerifyBugs({kBug});
    m_verifyOptions.quiet = true;
    EXPECT_EQ(Verify(m_sources), 0);
    EXPECT_EQ(Shown(), "");
    Damage("UPDATE bug SET title = 'X'");
    EXPECT_EQ(Verify(m_sources), 1);
    EXPECT_THAT(Shown(), StartsWith("differs: "));
    EXPECT_THAT(Shown(), Not(HasSubstr("NOT verified")));
}

ON_EACH_ENGINE(VerifyTest);

}  // namespace
}  // namespace tool
