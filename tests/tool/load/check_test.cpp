#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "check_fixture.h"
#include "interrupting_sink.h"
#include "recorddb/errors.h"
#include "tool/io/source_error.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;

class CheckTest : public OnEachEngine<CheckFixture> {};

TEST_P(CheckTest, SaysWhatALoadWouldDo) {
    EXPECT_EQ(
        Check(Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}})),
        0);
    EXPECT_THAT(Said(), HasSubstr("2 records read: 2 would be created, 0 updated, 0 rejected, "
                                  "0 skipped\n"));
    EXPECT_THAT(Said(), EndsWith("\nNothing would be lost or rejected.\n"));
}

TEST_P(CheckTest, RejectsWhatALoadRejectsForTheSameReasons) {
    m_options.attachments = m_folder.Path();
    Load({Configuration("c.xml", "record", "user", "login"),
          Records("users.xml", {{{"login", "ann"}}}),
          Configuration("d.xml", "record", "bug", "source_id"),
          Records("first.xml", {{{"source_id", "known"}, {"title", "Known"}}})});
    const auto records = BugsAsText(
        "<records><record><f name='title'>A</f><f name='votes'>many</f></record>\n"
        "<record><f name='source_id'>no title</f></record>\n"
        "<record><f name='title'>A</f><f name='colour'>red</f></record>\n"
        "<record><f name='title'>A</f><f name='owner'>bob</f></record>\n"
        "<record><f name='title'>A</f><f name='owner'>ann</f></record>\n"
        "<record><f name='title'>A</f><f name='source_id'>known</f></record>\n"
        "<record><f name='title'>a title of more than thirty letters</f></record>\n"
        "<record><f name='title'>A</f><f name='source_id'>same</f></record>\n"
        "<record><f name='title'>A</f><f name='source_id'>same</f></record>\n"
        "<record><f name='title'>A</g></record>\n"
        "<record><f name='title'>\xFF</f></record>\n"
        "<record><f name='title'>A</f><f name='log'>1\tnever\tann\tx\ty\tz</f></record>\n"
        "<record><f name='title'>A</f><f name='files'>1\nmissing.txt\n1\nd</f></record>\n"
        "<record><f name='title'>A</f>\n<record><f name='title'>B</f></record></records>");
    const auto update =
        std::vector{Configuration("u.xml", "record", "bug", "source_id",
                                  "<updaterecord name=\"TRUE\"/><importstate name=\"TRUE\"/>"
                                  "<duplicate_id name=\"original\"/>"),
                    Records("update.xml", {{{"source_id", "unknown"}, {"title", "A"}},
                                           {{"source_id", "known"}, {"state", "LOST"}},
                                           {{"source_id", "known"}, {"original", "known"}},
                                           {{"source_id", "known"}, {"original", "same"}}})};
    const auto history =
        Bugs({{{"source_id", "unknown"}, {"history", "1\t2020-01-01"}}}, "", "history");
    const auto sources = records + update + history;
    const auto rehearsed = ReportOf([&] { EXPECT_EQ(Check(sources), 1); });
    const auto loaded = ReportOf([&] { EXPECT_EQ(Load(sources), 1); });
    EXPECT_GT(loaded["rejects"].size(), 12U);
    EXPECT_EQ(rehearsed["rejects"], loaded["rejects"]);
    for (const char* total : {"read", "created", "updated", "rejected", "skipped", "history",
                              "attachments", "duplicates"}) {
        EXPECT_EQ(rehearsed[total], loaded[total]) << total;
    }
    EXPECT_THAT(Said(), HasSubstr("\nwould be rejected: "));
    EXPECT_THAT(LoadSaid(), HasSubstr("\nrejected: "));
}

TEST_P(CheckTest, EachGroupOfRecordsSeesThoseBefore) {
    std::vector<Fields> users;
    std::vector<Fields> bugs;
    for (int i = 0; i < 350; ++i) {
        users.push_back({{"login", "u" + std::to_string(i)}});
        bugs.push_back({{"source_id", std::to_string(i)},
                        {"title", "T"},
                        {"owner", "u" + std::to_string(349 - i)}});
    }
    bugs.push_back({{"source_id", "0"}, {"title", "again"}});
    const auto sources =
        std::vector{Configuration("users-configuration.xml", "record", "user", "login"),
                    Records("users.xml", users)} +
        Bugs(bugs);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("701 records read: 700 would be created, 0 updated, 1 rejected"));
    EXPECT_THAT(Said(), HasSubstr("record 351 (0)"));
}

TEST_P(CheckTest, FindsTheRecordsOfEarlierSources) {
    const auto sources =
        Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}}) +
        Bugs({{{"source_id", "a"}, {"history", "1\t2020-01-01\tann\tsubmit\tnone\tNEW"}}}, "",
             "history") +
        std::vector{Configuration("u.xml", "record", "bug", "source_id",
                                  "<updaterecord name=\"TRUE\"/>"
                                  "<duplicate_id name=\"original\"/>"),
                    Records("update.xml", {{{"source_id", "b"}, {"original", "a"}}})};
    EXPECT_EQ(Check(sources), 0);
    EXPECT_THAT(Said(), HasSubstr("4 records read: 2 would be created, 1 updated, 0 rejected"));
    EXPECT_THAT(Said(), HasSubstr("1 history entry, 0 attachments, 1 duplicate mark"));
}

TEST_P(CheckTest, SkipsWhatALoadWouldSkip) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    Load(sources);
    EXPECT_EQ(Check(sources), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded (1 record)"));
    EXPECT_THAT(Said(), HasSubstr("1 record read: 0 would be created, 0 updated, 0 rejected, "
                                  "1 skipped"));
    // Twice in one rehearsal: its own journal is read as well.
    const auto others = Bugs({{{"source_id", "b"}, {"title", "B"}}});
    EXPECT_EQ(Check({others[0], others[1], others[1]}), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded"));
}

TEST_P(CheckTest, RehearsesAFreshLoadOnDemand) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    Load(sources);
    m_options.fresh = true;
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("1 record would be rejected."));
}

TEST_P(CheckTest, RemindsOfWhatAnEarlierLoadRejectedAndTriesItOnDemand) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}});
    Load(sources);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), EndsWith("1 record of an earlier load would be left rejected.\n"));
    m_options.retryRejected = true;
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), EndsWith("1 record would be rejected.\n"));
    EXPECT_EQ(Check({Configuration("u.xml", "record", "user", "login"),
                     Records("users.xml", {{{"login", "ann"}}}), sources[0], sources[1]}),
              0);
}

TEST_P(CheckTest, ExaminesAttachmentsWithoutStoringThem) {
    m_options.attachments = m_folder.Path();
    m_folder.Write("note.txt", "hello");
    const auto record = [](const std::string& file) {
        return Fields{{"source_id", file}, {"title", "A"}, {"files", "1\n" + file + "\n5\na note"}};
    };
    EXPECT_EQ(Check(Bugs({record("note.txt")})), 0);
    EXPECT_THAT(Said(), HasSubstr("1 attachment,"));
    EXPECT_EQ(Check(Bugs({record("missing.txt"), record("../note.txt")})), 1);
    EXPECT_THAT(Said(), ContainsRegex("record 1 .*missing.txt"));
    EXPECT_THAT(Said(), ContainsRegex("record 2 .*\\.\\./note.txt"));
}

TEST_P(CheckTest, RefusesAttachmentsWithoutTheirFolderAsALoadDoes) {
    EXPECT_THROW(Check(Bugs({{{"source_id", "a"}, {"files", "1\nx\n1\nd"}}}, "", "attachments")),
                 SourceError);
    m_options.attachments = m_folder.File("nowhere");
    EXPECT_THROW(Check(Bugs({})), UsageError);
}

TEST_P(CheckTest, WritesAPageThatSpeaksOfARehearsal) {
    m_options.html = m_folder.File("check.html");
    Check(BugsAsText("<record><f name='title'>A</f><f name='id'>7</f></record>"));
    const std::string page = ReadFile(m_options.html);
    EXPECT_THAT(page, HasSubstr("Check of a load into"));
    EXPECT_THAT(page, HasSubstr("the database itself gives this field its value"));
}

TEST_P(CheckTest, PassesOverWhatStandsBeforeAnyConfiguration) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    EXPECT_EQ(Check({sources[1], sources[0], sources[1]}), 1);
    EXPECT_THAT(Said(), HasSubstr("1 record read: 1 would be created"));
    EXPECT_THAT(Said(), EndsWith("packets before any configuration: 1\n"
                                 "1 packet would be of no effect.\n"));
}

TEST_P(CheckTest, StopsAfterTooManyRejects) {
    m_options.maxRejects = 1;
    const Fields bad = {{"title", "A"}, {"votes", "many"}};
    EXPECT_EQ(Check(Bugs({bad, bad, bad, bad})), 1);
    EXPECT_THAT(Said(), HasSubstr("Stopped, since more than 1 record would be rejected. The "
                                  "database is as it was before."));
    EXPECT_THAT(Said(), EndsWith("Up to here: 2 records would be rejected.\n"));
}

TEST_P(CheckTest, EndsEarlyOnASignal) {
    const auto sources =
        Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}});
    const InterruptingSink sink;
    EXPECT_EQ(Check(sources), 128 + SIGTERM);
    EXPECT_THAT(Said(), HasSubstr("Stopped. The database is as it was before."));
    EXPECT_THAT(Said(), EndsWith("Up to here: Nothing would be lost or rejected.\n"));
}

TEST_P(CheckTest, UndoesWhatCameBeforeAnUnusableSource) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    EXPECT_THROW(Check({sources[0], sources[1], Configuration("x.xml", "record", "bogus", "id")}),
                 SourceError);
    EXPECT_THROW(Check({m_folder.File("nowhere.xml")}), SourceError);
}

TEST_P(CheckTest, QuietShowsOnlyWhatIsWrong) {
    m_options.quiet = true;
    EXPECT_EQ(Check(Bugs({{{"title", "A"}}})), 0);
    EXPECT_EQ(Said(), "");
    EXPECT_EQ(Check(BugsAsText("<record><f name='title'>A</f><f name='id'>7</f></record>")), 1);
    EXPECT_THAT(Said(), ContainsRegex("^would be lost: [^\n]*\n$"));
}

TEST_P(CheckTest, NeedsADatabaseThatItMayWriteTo) {
    const auto sources = Bugs({{{"title", "A"}}});
    m_options.database = m_folder.File("nowhere.db");
    std::ostringstream out;
    m_options.sources = sources;
    EXPECT_THROW(RunCheck(m_options, out, out), recorddb::sql::Error);
}

TEST_P(CheckTest, TracesTheImporterOnly) {
    m_options.trace = m_folder.File("check.txt");
    Check(Bugs({{{"source_id", "a"}, {"title", "A&#10;"}}}));
    const std::string rehearsed = ReadFile(m_options.trace);
    m_options.trace = m_folder.File("load.txt");
    Load(Bugs({{{"source_id", "a"}, {"title", "A&#10;"}}}));
    EXPECT_THAT(rehearsed, HasSubstr("ImportRecord begins"));
    EXPECT_EQ(rehearsed, ReadFile(m_options.trace));
}

ON_EACH_ENGINE(CheckTest);

}  // namespace
}  // namespace tool
