#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "interrupting_sink.h"
#include "load_fixture.h"
#include "recorddb/errors.h"
#include "tool/commands/check_command.h"
#include "tool/io/source_error.h"
#include "tool/losses/loss.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

std::string ReadFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class CheckTest : public OnEachEngine<LoadFixture> {
  protected:
    // Rehearses the load of the sources, and sees that nothing of it stays.
    int Check(std::vector<std::string> sources) {
        const std::string dump = Dump();
        // A reader leaves an empty log behind, which a writer takes away.
        Execute("");
        const std::string bytes = IsFile() ? ReadFile(m_database) : "";
        m_options.database = m_database;
        m_options.sources = std::move(sources);
        std::ostringstream out;
        std::ostringstream err;
        int code = -1;
        try {
            code = RunCheck(m_options, out, err);
        } catch (...) {
            m_said = err.str() + out.str();
            ExpectUntouched(dump, bytes);
            throw;
        }
        m_said = err.str() + out.str();
        ExpectUntouched(dump, bytes);
        return code;
    }

    std::string Said() const { return m_said; }
    // What Load said.
    std::string LoadSaid() const { return LoadFixture::Said(); }

    // The report of the check or load that `run` is.
    template <typename Run>
    nlohmann::json ReportOf(Run run) {
        m_options.report = m_folder.File("report.json");
        run();
        m_options.report.clear();
        return nlohmann::json::parse(ReadFile(m_folder.File("report.json")));
    }

    // The kinds of the losses that a check of the sources reports.
    std::vector<std::string> LossKinds(const std::vector<std::string>& sources) {
        std::vector<std::string> kinds;
        const auto report = ReportOf([&] { Check(sources); });
        for (const auto& loss : report["losses"]) {
            kinds.push_back(loss["kind"]);
        }
        return kinds;
    }

    // A data packet of bugs behind its configuration.
    std::vector<std::string> Bugs(const std::vector<Fields>& records, std::string_view more = "",
                                  std::string_view data = "record") {
        const std::string name = std::string(data) + "-bugs";
        return {Configuration(name + "-configuration.xml", data, "bug", "source_id", more),
                Records(name + ".xml", records)};
    }
    std::vector<std::string> BugsAsText(std::string_view xml, std::string_view data = "record") {
        std::vector<std::string> sources = Bugs({}, "", data);
        m_folder.Write(std::filesystem::path(sources[1]).filename().string(), std::string(xml));
        return sources;
    }

  private:
    void ExpectUntouched(const std::string& dump, const std::string& bytes) {
        EXPECT_FALSE(std::filesystem::exists(m_database + "-wal"));
        EXPECT_FALSE(std::filesystem::exists(m_database + "-shm"));
        EXPECT_TRUE(ReadFile(m_database) == bytes) << "the database file has changed";
        EXPECT_EQ(Dump(), dump);
    }

    std::string m_said;
};

std::vector<std::string> operator+(std::vector<std::string> sources,
                                   const std::vector<std::string>& more) {
    sources.insert(sources.end(), more.begin(), more.end());
    return sources;
}

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

TEST_P(CheckTest, TellsEachLossWithItsPlace) {
    EXPECT_EQ(Check(BugsAsText("<records>\n<record><f name='source_id'>core-25</f>"
                               "<f name='title'>A</f>\n<f name='log'>1\t\t\t\t\t\t</f></record>"
                               "</records>")),
              1);
    EXPECT_THAT(Said(), ContainsRegex("would be lost: .*record-bugs.xml, record 1 \\(core-25\\), "
                                      "line 3, field log: line 1 of the value"));
    EXPECT_THAT(Said(), EndsWith("history lines of seven or more columns: 1\n"
                                 "1 value would be lost.\n"));
}

TEST_P(CheckTest, ReportsEachLoss) {
    const auto report = ReportOf([&] {
        Check(BugsAsText("<record><f name='source_id'>a</f><f name='title'>A&#10;</f></record>"));
    });
    ASSERT_EQ(report["losses"].size(), 1U);
    const auto& loss = report["losses"][0];
    EXPECT_EQ(loss["kind"], "changed-text");
    EXPECT_EQ(loss["file"], m_folder.File("record-bugs.xml"));
    EXPECT_EQ(loss["record"], 1);
    EXPECT_EQ(loss["line"], 1);
    EXPECT_EQ(loss["source_id"], "a");
    EXPECT_EQ(loss["field"], "title");
    EXPECT_EQ(loss["text"], "the reference \"&#10;\" stays as it is written");
    EXPECT_EQ(report["rejects"].size(), 0U);
}

TEST_P(CheckTest, WritesAPageThatSpeaksOfARehearsal) {
    m_options.html = m_folder.File("check.html");
    Check(BugsAsText("<record><f name='title'>A</f><f name='id'>7</f></record>"));
    const std::string page = ReadFile(m_options.html);
    EXPECT_THAT(page, HasSubstr("Check of a load into"));
    EXPECT_THAT(page, HasSubstr("the database itself gives this field its value"));
}

TEST_P(CheckTest, AReportOfALoadHasNoLosses) {
    const auto report = ReportOf([&] { Load(Bugs({{{"source_id", "a"}, {"title", "A"}}})); });
    EXPECT_FALSE(report.contains("losses"));
}

TEST_P(CheckTest, FindsEveryKindOfLoss) {
    const std::string manyEntries = [] {
        std::string text;
        for (int i = 0; i < 502; ++i) {
            text += "1\t2020-01-01\tann\tsubmit\tnone\tNEW\n";
        }
        return text;
    }();
    const auto record = [](const std::string& fields) {
        return "<record><f name='title'>A</f>" + fields + "</record>";
    };
    const std::pair<std::string, LossKind> cases[] = {
        {record("<f name='log'>1\t\t\t\t\t\t</f>"), LossKind::LongHistoryLine},
        {record("<f name='log'>" + manyEntries + "</f>"), LossKind::HistoryBeyondLimit},
        {record("<f name='files'>1\na</f>"), LossKind::IncompleteAttachment},
        {"<record id='1'><f name='title'>A</f></record>" + record(""), LossKind::UnseenRecord},
        {record("<f>x</f>"), LossKind::NamelessField},
        {record("<f name='votes'>1<f name='source_id'>x</f></f>"), LossKind::NestedField},
        {record("text<f name='votes'></f>"), LossKind::UnreadField},
        {record("<f name='source_id'>&amp;lt;</f>"), LossKind::ChangedText},
        {record("<f name='id'>BUG7</f>"), LossKind::SkippedField},
        {record("<f name='title'>B</f>"), LossKind::RepeatedField},
        {record("<f name='votes'>BLANK</f>"), LossKind::ClearedValue},
        {"<records/>", LossKind::EmptyPacket},
        {"<records>" + record(""), LossKind::CutShort},
        {"<records>" + record("") + "\xE4</records>", LossKind::OutsideRecords},
    };
    for (const auto& [xml, kind] : cases) {
        EXPECT_THAT(LossKinds(BugsAsText(xml)), testing::ElementsAre(LossKindName(kind)))
            << LossKindName(kind);
    }
    EXPECT_THAT(LossKinds(BugsAsText(record(""), "history")),
                testing::ElementsAre(LossKindName(LossKind::UnusedField)));
    EXPECT_THAT(LossKinds(Bugs({{{"title", "A"}}}, "", "nothing")),
                testing::ElementsAre(LossKindName(LossKind::NothingImported)));
    EXPECT_THAT(LossKinds(Bugs({{{"title", "A"}}},
                               "<record_reference_mapping_list><m target_field='title' "
                               "reference_field='login'/></record_reference_mapping_list>")),
                testing::ElementsAre(LossKindName(LossKind::UnusedMapping)));
    EXPECT_THAT(LossKinds({Bugs({{{"title", "A"}}})[1]}),
                testing::ElementsAre(LossKindName(LossKind::NoConfiguration)));
}

TEST_P(CheckTest, APacketThatIsCutShortIsNoCleanOne) {
    EXPECT_EQ(Check(BugsAsText("<records>\n<record><f name='title'>A</f></record>\n")), 1);
    EXPECT_THAT(Said(), HasSubstr("bugs.xml, line 3: the packet is cut short: the element "
                                  "<records>, which opens on line 1, does not end; records may be "
                                  "missing, so export it anew"));
    EXPECT_THAT(Said(), HasSubstr("1 packet would be imported although cut short."));
}

TEST_P(CheckTest, TellsOfKeysThatNoReferenceCanName) {
    const auto keywords = [this](const std::string& file, const std::vector<std::string>& names) {
        std::vector<Fields> records;
        for (const std::string& name : names) {
            records.push_back({{"name", name}});
        }
        return std::vector<std::string>{Configuration("k.xml", "record", "keyword", "name"),
                                        Records(file, records)};
    };
    EXPECT_EQ(Check(keywords("keywords.xml", {"web", "web ", " ui", "a,b", "a b"})), 1);
    EXPECT_THAT(Said(), HasSubstr("record 2 (web ), line 4, field name: \"web \" has blanks around "
                                  "it, and references are trimmed"));
    EXPECT_THAT(Said(), HasSubstr("record 3 ( ui), line 5, field name: "));
    EXPECT_THAT(Said(), HasSubstr("record 4 (a,b), line 6, field name: \"a,b\" holds a comma"));
    EXPECT_THAT(Said(), HasSubstr("keys that no reference can name: 3"));
    EXPECT_THAT(Said(), HasSubstr("3 keys would be out of reach of references."));
}

TEST_P(CheckTest, OnlyKeysThatAreReferredToMatter) {
    EXPECT_EQ(Check(Bugs({{{"source_id", "a, b "}, {"title", "A"}}})), 0) << Said();
    EXPECT_EQ(Check({Configuration("u.xml", "record", "user", "email"),
                     Records("users.xml", {{{"login", "ann,b"}, {"email", "ann"}}})}),
              0)
        << Said();
}

TEST_P(CheckTest, TellsOfReferencesThatMeanAnotherRecord) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'ann ', 'b')");
    Execute(
        "INSERT INTO keyword (dbid, name) VALUES (1, 'a'), (2, 'b'), "
        "(3, 'a,b'), (4, ' b')");
    const auto check = [this](const std::string& owner, const std::string& keywords) {
        return Check(Bugs({{{"title", "A"}, {"owner", owner}, {"keywords", keywords}}}));
    };
    EXPECT_EQ(check("ann", "a"), 0) << Said();
    EXPECT_EQ(check(" ann", "a"), 0) << Said();
    EXPECT_EQ(check("ann ", "a"), 1);
    EXPECT_THAT(Said(), HasSubstr("field owner: \"ann \" is taken for \"ann\", and there is a user "
                                  "whose login is \"ann \", which no reference can name"));
    EXPECT_EQ(check("ann", "b,a"), 0) << Said();
    EXPECT_EQ(check("ann", "a,b"), 1);
    EXPECT_THAT(Said(), HasSubstr("field keywords: \"a,b\" is taken for several items"));
    EXPECT_EQ(check("ann", "a, b"), 1);
    EXPECT_THAT(Said(), HasSubstr("field keywords: \" b\" is taken for \"b\""));
}

TEST_P(CheckTest, TellsOfAnUpdateThatWouldClearAReferenceToARecordCalledBlank) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Load(Bugs({{{"source_id", "a"}, {"title", "A"}, {"owner", "ann"}}}));
    const auto update =
        Bugs({{{"source_id", "a"}, {"owner", "BLANK"}}}, "<updaterecord name=\"TRUE\"/>");
    EXPECT_EQ(Check(update), 0) << Said();
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'BLANK', 'b')");
    EXPECT_EQ(Check(update), 1);
    EXPECT_THAT(Said(), HasSubstr("field owner: \"BLANK\" is taken for no value, and there is a "
                                  "user whose login is \"BLANK\", which no reference can name"));
}

TEST_P(CheckTest, TakesBlankInAListForAnItem) {
    Execute("INSERT INTO keyword (dbid, name) VALUES (1, 'BLANK')");
    EXPECT_EQ(Check(Bugs({{{"title", "A"}, {"keywords", "BLANK"}}})), 0) << Said();
}

TEST_P(CheckTest, TellsOfReferencesThatAMappingTakesForOthers) {
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (1, 'ann', 'a')");
    Execute("INSERT INTO \"user\" (dbid, login, email) VALUES (2, 'bob', ' a')");
    EXPECT_EQ(Check(Bugs({{{"title", "A"}, {"owner", " a"}}},
                         "<record_reference_mapping_list><m target_field='owner' "
                         "reference_field='email'/></record_reference_mapping_list>")),
              1);
    EXPECT_THAT(Said(), HasSubstr("there is a user whose email is \" a\""));
}

TEST_P(CheckTest, PassesOverWhatStandsBeforeAnyConfiguration) {
    const auto sources = Bugs({{{"source_id", "a"}, {"title", "A"}}});
    EXPECT_EQ(Check({sources[1], sources[0], sources[1]}), 1);
    EXPECT_THAT(Said(), HasSubstr("1 record read: 1 would be created"));
    EXPECT_THAT(Said(), EndsWith("packets before any configuration: 1\n"
                                 "1 packet would be of no effect.\n"));
}

TEST_P(CheckTest, FindsTheLossesOfRecordsThatAreLoadedAlready) {
    const auto sources = BugsAsText("<record><f name='title'>A</f><f name='id'>7</f></record>");
    Load(sources);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("fields of a type that is never written: 1"));
    EXPECT_THAT(Said(), HasSubstr("1 skipped"));
}

TEST_P(CheckTest, FindsTheLossesOfPacketsThatAreHandedOverWhole) {
    m_options.wholePackets = true;
    const auto sources = BugsAsText(
        "<records><record><f name='title'>A</f></record>"
        "<record><f name='title'>A</f><f name='id'>7</f></record>"
        "</records>");
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("record 2, line 1, field id"));
    EXPECT_THAT(Said(), HasSubstr("2 would be created"));
    Load(sources);
    EXPECT_EQ(Check(sources), 1);
    EXPECT_THAT(Said(), HasSubstr("1 value would be lost."));
}

TEST_P(CheckTest, ShowsTwentyLossesOfEachKindAndCountsTheOthers) {
    std::string xml;
    for (int i = 0; i < 25; ++i) {
        xml += "<record><f name='title'>A</f><f name='id'>7</f></record>\n";
    }
    const auto report = ReportOf([&] {
        Check(BugsAsText(xml + "<record><f name='title'>A</f><f name='votes'>BLANK</f></record>"));
    });
    EXPECT_EQ(report["losses"].size(), 26U);
    EXPECT_THAT(Said(), HasSubstr("record 20, line 20, field id"));
    EXPECT_THAT(Said(), Not(HasSubstr("record 21, line 21, field id")));
    EXPECT_THAT(Said(), HasSubstr("would be lost: further fields of a type that is never written "
                                  "are counted; --report lists all\n"));
    EXPECT_THAT(Said(), HasSubstr("record 26, line 26, field votes"));
    EXPECT_THAT(Said(), HasSubstr("fields of a type that is never written: 25\n"
                                  "values BLANK in new records: 1\n"
                                  "26 values would be lost.\n"));
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
