#include <gmock/gmock.h>

#include <csignal>
#include <fstream>
#include <iterator>

#include "interrupting_sink.h"
#include "load_fixture.h"
#include "recorddb/database.h"
#include "recorddb/errors.h"
#include "tool/io/source_error.h"
#include "tool/load/load_journal.h"

namespace tool {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class LoadTest : public OnEachEngine<LoadFixture> {
  protected:
    // A configuration for bugs and one data packet with them.
    std::vector<std::string> Bugs(const std::vector<Fields>& records,
                                  const std::string& name = "bugs.xml") {
        return {Configuration("bugs-configuration.xml", "record", "bug", "source_id"),
                Records(name, records)};
    }
};

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST_P(LoadTest, EachRecordIsCreated) {
    EXPECT_EQ(
        Load(Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}})),
        0);
    EXPECT_EQ(Query("SELECT source_id FROM bug ORDER BY dbid"), "a\nb");
}

TEST_P(LoadTest, OneBadRecordCostsExactlyThatRecord) {
    std::vector<Fields> records;
    for (int i = 0; i < 2'000; ++i) {
        const std::string id = std::to_string(i);
        records.push_back({{"source_id", id}, {"title", "T"}, {"votes", i == 1000 ? "many" : id}});
    }
    EXPECT_EQ(Load(Bugs(records)), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "1999");
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE source_id = '1000'"), "0");
    EXPECT_THAT(Said(),
                ContainsRegex("bugs.xml, record 1001 \\(1000\\), line [0-9]+: .*votes.*many"));
}

TEST_P(LoadTest, NothingOfARejectedRecordStays) {
    // The history is imported after the record is committed, and refused for its second line.
    EXPECT_EQ(
        Load(Bugs(
            {{{"source_id", "a"},
              {"title", "A"},
              {"log", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW\n2\tnever\tu\tx\ty\tz"}}})),
        1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
    EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), "0");
}

TEST_P(LoadTest, ASecondLoadOfTheSameSourcesChangesNothing) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    Load(sources);
    const std::string before = Dump();
    EXPECT_EQ(Load(sources), 0);
    EXPECT_EQ(Dump(), before);
    EXPECT_THAT(Said(), HasSubstr("bugs.xml: already loaded (1 record)"));
}

TEST_P(LoadTest, TheSameContentUnderAnotherNameIsKnown) {
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}));
    EXPECT_EQ(Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}, "copy.xml")), 0);
    EXPECT_THAT(Said(), HasSubstr("copy.xml: already loaded"));
}

TEST_P(LoadTest, TheSameDataUnderAnotherConfigurationIsLoadedAgain) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    Load(sources);
    const auto update =
        Configuration("update.xml", "record", "bug", "source_id", "<updaterecord name=\"TRUE\"/>");
    EXPECT_EQ(Load({update, sources[1]}), 0);
    EXPECT_THAT(Said(), HasSubstr("1 record read: 0 created, 1 updated"));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "1");
}

TEST_P(LoadTest, AMappingOfAnotherRecordTypeDoesNotMakeASourceLookNew) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    Load(sources);
    const auto users = Configuration(
        "users.xml", "record", "user", "login",
        "<record_reference_mapping_list><m target_field=\"boss\" reference_field=\"login\"/>"
        "</record_reference_mapping_list>");
    EXPECT_EQ(Load({users, sources[0], sources[1]}), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded"));
}

TEST_P(LoadTest, FreshIgnoresTheJournal) {
    const auto sources = Bugs({{{"title", "no identity"}}});
    Load(sources);
    m_options.fresh = true;
    EXPECT_EQ(Load(sources), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "2");
}

TEST_P(LoadTest, EarlierRejectsKeepASecondLoadFromCountingAsComplete) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}});
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Load(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("an earlier load rejected 1 record of it"));
}

TEST_P(LoadTest, RejectedRecordsCanBeTriedAgain) {
    const auto bugs = Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}},
                            {{"source_id", "b"}, {"title", "B"}}});
    EXPECT_EQ(Load(bugs), 1);
    Load({Configuration("users-configuration.xml", "record", "user", "login"),
          Records("users.xml", {{{"login", "ann"}}})});
    m_options.retryRejected = true;
    EXPECT_EQ(Load(bugs), 0);
    EXPECT_EQ(Query("SELECT source_id FROM bug ORDER BY source_id"), "a\nb");
    m_options.retryRejected = false;
    EXPECT_EQ(Load(bugs), 0);
}

TEST_P(LoadTest, RejectsAreMendedAndLoaded) {
    m_options.rejects = m_folder.File("rejects");
    EXPECT_EQ(Load(Bugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}},
                         {{"source_id", "b"}, {"title", "B"}}})),
              1);
    const std::string file = m_folder.File("rejects/0001-records.xml");
    std::string text = ReadFile(file);
    EXPECT_THAT(text, HasSubstr("record 1"));
    text.replace(text.find(">many<"), 6, ">3<");
    m_folder.Write("rejects/0001-records.xml", text);
    m_options.rejects.clear();
    EXPECT_EQ(Load({m_folder.File("rejects")}), 0);
    EXPECT_EQ(Query("SELECT votes FROM bug WHERE source_id = 'a'"), "3");
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "2");
}

TEST_P(LoadTest, TheReportListsTotalsAndRejects) {
    m_options.report = m_folder.File("report.json");
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}},
               {{"source_id", "b"}, {"title", "B"}}}));
    const std::string report = ReadFile(m_options.report);
    EXPECT_THAT(report, HasSubstr("\"read\":2,\"created\":1,\"updated\":0,\"rejected\":1"));
    EXPECT_THAT(report, HasSubstr("\"source_id\":\"a\""));
}

TEST_P(LoadTest, DataBeforeAnyConfigurationIsRefused) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    EXPECT_THROW(Load({sources[1]}), SourceError);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(LoadTest, AConfigurationOfAnUnknownRecordTypeEndsTheLoad) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    const auto other = Configuration("other.xml", "record", "bogus", "source_id");
    try {
        Load({sources[0], other, sources[1]});
        FAIL() << "no error";
    } catch (const SourceError& error) {
        EXPECT_THAT(error.what(), HasSubstr("bogus"));
    }
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(LoadTest, AConfigurationThatImportsNothingIsWarnedOf) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    const auto other = Configuration("other.xml", "records", "bug", "source_id");
    EXPECT_EQ(Load({other, sources[1]}), 0);
    EXPECT_THAT(Said(), HasSubstr("import_data is \"records\""));
    EXPECT_THAT(Said(), HasSubstr("1 skipped"));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(LoadTest, AttachmentPacketsNeedTheirFolder) {
    const auto files = Configuration("files.xml", "attachments", "bug", "source_id");
    EXPECT_THROW(
        Load({files, Records("data.xml", {{{"source_id", "a"}, {"files", "1\nx\n1\nd"}}})}),
        SourceError);
}

TEST_P(LoadTest, AttachmentsAreTakenFromTheirFolder) {
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}));
    m_options.attachments = m_folder.Path();
    m_folder.Write("note.txt", "hello");
    EXPECT_EQ(
        Load({Configuration("files.xml", "attachments", "bug", "source_id"),
              Records("data.xml", {{{"source_id", "a"}, {"files", "1\nnote.txt\n5\na note"}}})}),
        0);
    EXPECT_EQ(Query("SELECT filename || filesize || description FROM zt_attachment"),
              "note.txt5a note");
}

TEST_P(LoadTest, ARefusedAttachmentNamesItsCause) {
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}));
    m_options.attachments = m_folder.Path();
    EXPECT_EQ(
        Load({Configuration("files.xml", "attachments", "bug", "source_id"),
              Records("data.xml", {{{"source_id", "a"}, {"files", "7\n../note.txt\n5\nd"}}})}),
        1);
    EXPECT_THAT(Said(), HasSubstr("../note.txt"));
}

TEST_P(LoadTest, ARefusedDuplicateMarkNamesItsCause) {
    const auto configuration = Configuration("bugs-configuration.xml", "record", "bug", "source_id",
                                             "<duplicate_id name=\"duplicate_of\"/>");
    EXPECT_EQ(
        Load({configuration,
              Records("bugs.xml", {{{"source_id", "a"}, {"title", "A"}, {"duplicate_of", "a"}}})}),
        1);
    EXPECT_THAT(Said(), ContainsRegex("could not be marked.*of itself"));
}

TEST_P(LoadTest, HistoryIsNotCountedAsAnUpdate) {
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}));
    EXPECT_EQ(Load({Configuration("history.xml", "history", "bug", "source_id"),
                    Records("data.xml",
                            {{{"source_id", "a"},
                              {"history", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW"}}})}),
              0);
    EXPECT_THAT(Said(), HasSubstr("0 created, 0 updated"));
    EXPECT_THAT(Said(), HasSubstr("1 history entry"));
}

TEST_P(LoadTest, AnUnseenRecordElementIsWarnedOf) {
    auto sources = Bugs({});
    m_folder.Write("bugs.xml",
                   "<records><record id=\"7\"><field name=\"title\">A</field></record></records>");
    EXPECT_EQ(Load(sources), 0);
    EXPECT_THAT(Said(), HasSubstr("warning: "));
    EXPECT_THAT(Said(), HasSubstr("<record id=\"7\""));
}

TEST_P(LoadTest, APacketThatIsCutShortIsWarnedOf) {
    auto sources = Bugs({});
    m_folder.Write("bugs.xml", "<records><record><field name=\"title\">A</field></record>");
    for (const bool whole : {false, true}) {
        m_options.wholePackets = whole;
        m_options.fresh = whole;
        EXPECT_EQ(Load(sources), 0);
        EXPECT_THAT(Said(), HasSubstr("bugs.xml, line 1: the packet is cut short"));
    }
}

TEST_P(LoadTest, ManyWarningsOfOneKindAreNotShown) {
    auto sources = Bugs({});
    std::string records;
    for (int i = 0; i < 25; ++i) {
        records += "<record><field name=\"title\">A</field></record>" + std::to_string(i);
    }
    m_folder.Write("bugs.xml", "<records>" + records + "</records>");
    EXPECT_EQ(Load(sources), 0);
    EXPECT_THAT(Said(), HasSubstr("text outside of records: \"19\""));
    EXPECT_THAT(Said(), Not(HasSubstr("text outside of records: \"20\"")));
    EXPECT_THAT(Said(), HasSubstr("warning: further places outside of records"));
}

TEST_P(LoadTest, ARecordBeyondALimitCostsItselfOnly) {
    std::string deep = "A";
    for (int i = 0; i < 300; ++i) {
        deep = "<x>" + deep + "</x>";
    }
    const auto sources = Bugs({{{"source_id", "a"}, {"title", deep}},
                               {{"source_id", "b"}, {"title", std::string(5000, 'B')}},
                               {{"source_id", "c"}, {"title", "C"}}});
    m_options.limits.size = 4000;
    EXPECT_EQ(Load(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("record 1 (a), line 3: its elements are nested deeper than 256, "
                                  "the most that --max-depth allows"));
    EXPECT_THAT(Said(), HasSubstr("record 2, line 4: the record is not shorter than 4000 bytes, "
                                  "which --max-record-size sets"));
    EXPECT_EQ(Query("SELECT source_id FROM bug"), "c");
}

TEST_P(LoadTest, MaxRejectsStopsEarlyAndTheSameCommandGoesOn) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "x"}},
                               {{"source_id", "b"}, {"title", "B"}, {"votes", "x"}},
                               {{"source_id", "c"}, {"title", "C"}}});
    m_options.maxRejects = 1;
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
    m_options.maxRejects.reset();
    EXPECT_EQ(Load(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("goes on behind record 2"));
    EXPECT_EQ(Query("SELECT source_id FROM bug"), "c");
}

TEST_P(LoadTest, AnInterruptedLoadFinishesTheCurrentRecordAndGoesOnLater) {
    const auto sources =
        Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}});
    {
        const InterruptingSink sink;
        EXPECT_EQ(Load(sources), 128 + SIGTERM);
    }
    EXPECT_EQ(Query("SELECT source_id FROM bug"), "a");
    EXPECT_THAT(Said(), HasSubstr("the same command goes on"));
    EXPECT_EQ(Load(sources), 0);
    EXPECT_THAT(Said(), HasSubstr("goes on behind record 1"));
    EXPECT_EQ(Query("SELECT source_id FROM bug ORDER BY dbid"), "a\nb");
}

TEST_P(LoadTest, AWholePacketIsAllOrNothing) {
    m_options.wholePackets = true;
    EXPECT_EQ(Load(Bugs({{{"source_id", "a"}, {"title", "A"}},
                         {{"source_id", "b"}, {"title", "B"}, {"votes", "x"}}})),
              1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
    EXPECT_EQ(
        Load(Bugs({{{"source_id", "a"}, {"title", "A"}}, {{"source_id", "b"}, {"title", "B"}}})),
        0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "2");
}

TEST_P(LoadTest, ARejectedWholePacketIsLoadedFromItsBeginningLater) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}},
                               {{"source_id", "b"}, {"title", "B"}},
                               {{"source_id", "c"}, {"title", "C"}}});
    m_options.wholePackets = true;
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
    m_options.wholePackets = false;
    Load({Configuration("users-configuration.xml", "record", "user", "login"),
          Records("users.xml", {{{"login", "ann"}}})});
    EXPECT_EQ(Load(sources), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "3");
}

TEST_P(LoadTest, APacketLoadedByRecordsIsNotLoadedWholeAgain) {
    const auto sources = Bugs({{{"title", "A"}}, {{"title", "B"}, {"owner", "ann"}}});
    EXPECT_EQ(Load(sources), 1);
    m_options.wholePackets = true;
    m_options.retryRejected = true;
    EXPECT_THROW(Load(sources), SourceError);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "1");
}

TEST_P(LoadTest, RetryingAnInterruptedLoadStillLeavesItsRejects) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}, {"votes", "many"}},
                               {{"source_id", "b"}, {"title", "B"}}});
    m_options.maxRejects = 0;
    EXPECT_EQ(Load(sources), 1);
    m_options.maxRejects.reset();
    m_options.retryRejected = true;
    EXPECT_EQ(Load(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("an earlier load rejected 1 record of it"));
    EXPECT_EQ(Query("SELECT source_id FROM bug"), "b");
}

TEST_P(LoadTest, AFreshLoadThatStopsDoesNotPromiseToGoOn) {
    m_options.maxRejects = 0;
    m_options.fresh = true;
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}}));
    EXPECT_THAT(Said(), HasSubstr("go on without --fresh"));
}

TEST_P(LoadTest, TwoLoadsOfOneSourceAtATimeDoNotBothImportIt) {
    const auto database = recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadWrite);
    const recorddb::journal::JournalKey key{std::string(64, 'a'), std::string(64, 'b')};
    LoadJournal first(database->GetJournal(), key, "bugs.xml", false, false);
    LoadJournal second(database->GetJournal(), key, "bugs.xml", false, false);
    auto transaction = database->Begin();
    first.NoteImported(0, {});
    first.Save();
    first.NoteImported(1, {});
    first.Save();
    second.NoteImported(0, {});
    try {
        second.Save();
        ADD_FAILURE() << "no error";
    } catch (const recorddb::sql::Error& error) {
        EXPECT_EQ(error.Kind(), recorddb::sql::ErrorKind::Busy);
        EXPECT_THAT(error.what(), HasSubstr("another load of bugs.xml"));
    }
}

TEST_P(LoadTest, QuietSaysNothingOfSuccess) {
    m_options.quiet = true;
    EXPECT_EQ(Load(Bugs({{{"source_id", "a"}, {"title", "A"}}})), 0);
    EXPECT_EQ(Said(), "");
}

TEST_P(LoadTest, TheTraceFileHoldsTheImportersTraces) {
    m_options.trace = m_folder.File("trace.txt");
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}}}));
    EXPECT_THAT(ReadFile(m_options.trace), HasSubstr("AdImporter: ImportRecord begins\n"));
}

ON_EACH_ENGINE(LoadTest);

}  // namespace
}  // namespace tool
