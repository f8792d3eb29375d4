// Records that refer to later ones wait for these.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "load_fixture.h"
#include "platform/messages/addiagnostic.h"
#include "tool/commands/check_command.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

constexpr const char* kTasksSchema = R"(record_types:
  person:
    key: [login]
    fields:
      login: {type: text, required: true}
      number: {type: integer, unique: true}
      boss: {type: reference, to: person}
  place:
    key: [town, street]
    fields:
      town: {type: text, required: true}
      street: {type: text, required: true}
  task:
    prefix: TASK
    states: [NEW, DONE]
    duplicate_state: DONE
    fields:
      source_id: {type: text, unique: true}
      title: {type: text}
      votes: {type: integer}
      owner: {type: reference, to: person}
      site: {type: reference, to: place}
      people: {type: reference_list, to: person}
      log: {type: history}
)";

// Counts how often the importer begins with a record.
class CountingSink : public AdDiagnosticSink {
  public:
    CountingSink() : m_former(AdDiagnostic::SetSink(this)) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    }
    ~CountingSink() override {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
        AdDiagnostic::SetSink(m_former);
    }
    CountingSink(const CountingSink&) = delete;
    CountingSink& operator=(const CountingSink&) = delete;

    bool Wants(int /*flag*/) override { return true; }
    void Write(const Obx_String& /*tag*/, const Obx_String& text) override {
        m_tries += text == u"ImportRecord begins" ? 1 : 0;
    }
    int Tries() const { return m_tries; }

  private:
    int m_tries = 0;
    AdDiagnosticSink* m_former;
};

class TasksFixture : public LoadFixture {
  protected:
    explicit TasksFixture(Engine engine) : LoadFixture(engine, kTasksSchema) {}
};

class WaitingLoadTest : public OnEachEngine<TasksFixture> {
  protected:
    // Configurations of each type, with `more` in them, and records under them.
    std::vector<std::string> People(const std::string& name, const std::vector<Fields>& records,
                                    std::string_view more = "") {
        return {Configuration(name + "-1.xml", "record", "person", "login", more),
                Records(name + "-2.xml", records)};
    }
    std::vector<std::string> Tasks(const std::string& name, const std::vector<Fields>& records,
                                   std::string_view more = "", std::string_view data = "record") {
        return {Configuration(name + "-1.xml", data, "task", "source_id", more),
                Records(name + "-2.xml", records)};
    }
    static std::vector<std::string> Together(std::vector<std::string> first,
                                             const std::vector<std::string>& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    // The titles and owners of the tasks, in the order in which they were made.
    std::string TasksThere() {
        return Query(
            "SELECT task.source_id || ':' || coalesce(task.title, '') || ':' || "
            "coalesce(person.login, '') FROM task LEFT JOIN person ON person.dbid = task.owner "
            "ORDER BY task.dbid");
    }
    std::string WaitingInTheJournal() { return Query("SELECT count(*) FROM zt_journal_waiting"); }

    static std::vector<Fields> Chain(int length) {
        std::vector<Fields> people;
        for (int i = 0; i < length; ++i) {
            people.push_back({{"login", fmt::format("p{}", i)}});
            if (i + 1 < length) {
                people.back().emplace_back("boss", fmt::format("p{}", i + 1));
            }
        }
        return people;
    }
};

TEST_P(WaitingLoadTest, ReferenceToALaterRecordOfTheSourceIsResolved) {
    EXPECT_EQ(Load(People("p", {{{"login", "ann"}, {"boss", "bob"}}, {{"login", "bob"}}})), 0);
    EXPECT_EQ(Query("SELECT login || coalesce(boss, 0) FROM person ORDER BY dbid"), "bob0\nann1");
    EXPECT_THAT(Said(), HasSubstr("2 records read: 2 created, 0 updated, 0 rejected"));
    EXPECT_THAT(Said(), HasSubstr("1 record waited for others"));
}

TEST_P(WaitingLoadTest, ReferenceToARecordOfALaterSourceIsResolved) {
    EXPECT_EQ(
        Load(Together(Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}, {"people", "bob,ann"}},
                                  {{"source_id", "b"}}}),
                      People("p", {{{"login", "ann"}}, {{"login", "bob"}}}))),
        0);
    EXPECT_EQ(TasksThere(), "b::\na::ann");
    EXPECT_EQ(Query("SELECT count(*) FROM task__people"), "2");
    EXPECT_EQ(Query("SELECT min(complete) FROM zt_journal"), "1");
    EXPECT_EQ(WaitingInTheJournal(), "0");
}

TEST_P(WaitingLoadTest, KeyOfSeveralFieldsIsWaitedFor) {
    EXPECT_EQ(
        Load(Together(Tasks("t", {{{"source_id", "a"}, {"site", "Old Town Main Street"}}}),
                      {Configuration("s-1.xml", "record", "place", "town"),
                       Records("s-2.xml", {{{"town", "Old Town"}, {"street", "Main Street"}}})})),
        0);
    EXPECT_EQ(Query("SELECT count(site) FROM task"), "1");
}

TEST_P(WaitingLoadTest, NumberIsWaitedForHoweverItIsWritten) {
    EXPECT_EQ(Load(Together(Tasks("t", {{{"source_id", "a"}, {"owner", "007"}}},
                                  "<record_reference_mapping_list><m target_field=\"owner\" "
                                  "reference_field=\"number\"/></record_reference_mapping_list>"),
                            People("p", {{{"login", "ann"}, {"number", "7"}}}))),
              0);
    EXPECT_EQ(TasksThere(), "a::ann");
}

TEST_P(WaitingLoadTest, DuplicateWaitsForItsOriginal) {
    EXPECT_EQ(Load(Tasks("t", {{{"source_id", "a"}, {"dup", "b"}}, {{"source_id", "b"}}},
                         "<duplicate_id name=\"dup\"/>")),
              0);
    EXPECT_EQ(Query("SELECT duplicate || '>' || original FROM zt_duplicate"), "2>1");
}

TEST_P(WaitingLoadTest, LaterRecordsOfAnIdWaitBehindTheFirst) {
    const auto created = Tasks("t", {{{"source_id", "a"}, {"title", "1"}, {"owner", "ann"}}});
    const auto updated =
        Tasks("u", {{{"source_id", "a"}, {"title", "2"}}, {{"source_id", "a"}, {"title", "3"}}},
              "<updaterecord name=\"TRUE\"/>");
    EXPECT_EQ(Load(Together(Together(created, updated), People("p", {{{"login", "ann"}}}))), 0);
    EXPECT_EQ(TasksThere(), "a:3:ann");
    EXPECT_THAT(Said(), HasSubstr("2 created, 2 updated, 0 rejected"));
}

TEST_P(WaitingLoadTest, UpdatesAndHistoryWaitForTheRecordThatComesLater) {
    const auto updated =
        Tasks("u", {{{"source_id", "a"}, {"title", "2"}}}, "<updaterecord name=\"TRUE\"/>");
    const auto history = Tasks(
        "h", {{{"source_id", "a"}, {"history", "1\t2020-01-01 00:00:00\tu\tsubmit\tnone\tNEW"}}},
        "", "history");
    const auto created = Tasks("t", {{{"source_id", "a"}, {"title", "1"}}});
    EXPECT_EQ(Load(Together(Together(updated, history), created)), 0);
    EXPECT_EQ(TasksThere(), "a:2:");
    EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), "1");
}

TEST_P(WaitingLoadTest, EachRecordOfALongChainIsTriedTwice) {
    constexpr int length = 1000;
    const CountingSink sink;
    EXPECT_EQ(Load(People("p", Chain(length))), 0);
    EXPECT_LE(sink.Tries(), 2 * length);
    EXPECT_EQ(Query("SELECT count(*) FROM person"), "1000");
    EXPECT_EQ(Query("SELECT count(boss) FROM person"), "999");
    EXPECT_EQ(Query("SELECT login FROM person WHERE dbid = 1"), "p999");
}

TEST_P(WaitingLoadTest, CircleIsRejectedWithItsCauseAndNothingElseIs) {
    EXPECT_EQ(Load(People("p", {{{"login", "a"}, {"boss", "b"}},
                                {{"login", "b"}, {"boss", "a"}},
                                {{"login", "c"}}})),
              1);
    EXPECT_EQ(Query("SELECT login FROM person"), "c");
    EXPECT_THAT(Said(), AllOf(HasSubstr("record 1 (a), line 3"),
                              HasSubstr("It waits for the person \"b\" (field boss)."),
                              HasSubstr("record 2 (b), line 4"),
                              HasSubstr("It waits for the person \"a\" (field boss), which was "
                                        "rejected too")));
    EXPECT_LT(Said().find("record 1 (a)"), Said().find("record 2 (b)"));
    EXPECT_EQ(Query("SELECT complete || ' ' || rejected FROM zt_journal"), "1 2");
    EXPECT_EQ(WaitingInTheJournal(), "0");
}

TEST_P(WaitingLoadTest, WhatWaitedBehindARejectedRecordIsTriedAfterIt) {
    Load(Tasks("t", {{{"source_id", "a"}, {"title", "1"}}}));
    EXPECT_EQ(Load(Tasks("u",
                         {{{"source_id", "a"}, {"owner", "nobody"}, {"title", "2"}},
                          {{"source_id", "a"}, {"title", "3"}}},
                         "<updaterecord name=\"TRUE\"/>")),
              1);
    EXPECT_EQ(TasksThere(), "a:3:");
    EXPECT_THAT(Said(), HasSubstr("1 updated, 1 rejected"));
}

TEST_P(WaitingLoadTest, RecordThatIsRefusedForAnotherReasonAfterItWaitedIsRejectedThen) {
    EXPECT_EQ(Load(Together(Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}, {"votes", "many"}}}),
                            People("p", {{{"login", "ann"}}}))),
              1);
    EXPECT_THAT(Said(), AllOf(HasSubstr("rejected: "), Not(HasSubstr("It waits"))));
    EXPECT_EQ(Query("SELECT count(*) FROM zt_journal_reject"), "1");
}

TEST_P(WaitingLoadTest, RejectsOfEachConfigurationStandTogether) {
    m_options.rejects = m_folder.File("rejects");
    EXPECT_EQ(Load(Together(Tasks("t", {{{"source_id", "a"}, {"owner", "x"}},
                                        {{"source_id", "b"}, {"votes", "many"}},
                                        {{"source_id", "c"}, {"owner", "y"}}}),
                            People("p", {{{"login", "ann"}, {"boss", "z"}}}))),
              1);
    std::vector<std::string> files;
    for (const auto& entry : std::filesystem::directory_iterator(m_options.rejects)) {
        files.push_back(entry.path().filename());
    }
    EXPECT_THAT(files, testing::UnorderedElementsAre("0001-configuration.xml", "0001-records.xml",
                                                     "0002-configuration.xml", "0002-records.xml"));
    const auto text = [this](const char* name) {
        std::ifstream file(m_options.rejects / name);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    EXPECT_THAT(text("0001-configuration.xml"), HasSubstr("\"task\""));
    EXPECT_THAT(text("0002-configuration.xml"), HasSubstr("\"person\""));
    // In a database that has what was missing, all of it can be loaded.
    Load(People("q", {{{"login", "x"}}, {{"login", "y"}}, {{"login", "z"}}}));
    const std::string rejects = m_options.rejects.string();
    m_options.rejects.clear();
    EXPECT_EQ(Load({rejects}), 1);
    EXPECT_EQ(TasksThere(), "a::x\nc::y");
}

TEST_P(WaitingLoadTest, LoadThatStoppedIsTakenUpWithWhatWaited) {
    const auto sources = Together(Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}},
                                              {{"source_id", "a"}, {"title", "2"}, {"votes", "3"}},
                                              {{"source_id", "b"}, {"votes", "many"}},
                                              {{"source_id", "c"}}}),
                                  People("p", {{{"login", "ann"}}}));
    m_options.maxRejects = 0;
    EXPECT_EQ(Load(sources), 1);
    EXPECT_EQ(Query("SELECT ordinal FROM zt_journal_waiting ORDER BY ordinal"), "0\n1");
    EXPECT_EQ(Query("SELECT complete || ' ' || next_ordinal FROM zt_journal"), "0 3");
    m_options.maxRejects.reset();
    EXPECT_EQ(Load(sources), 1);
    EXPECT_THAT(Said(),
                HasSubstr("t-2.xml: takes up 2 records that waited there for other records"));
    EXPECT_EQ(TasksThere(), "c::\na::ann");
    EXPECT_EQ(WaitingInTheJournal(), "0");
    EXPECT_EQ(Query("SELECT min(complete) FROM zt_journal"), "1");
}

TEST_P(WaitingLoadTest, SourceOfWhichRecordsWaitIsNotLoaded) {
    const auto tasks = Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}}});
    m_options.maxRejects = 0;
    EXPECT_EQ(Load(Together(tasks, Tasks("x", {{{"source_id", "b"}, {"votes", "many"}}}))), 1);
    EXPECT_EQ(Query("SELECT complete FROM zt_journal WHERE source_name LIKE '%t-2.xml'"), "0");
    m_options.maxRejects.reset();
    EXPECT_EQ(Load(Together(tasks, People("p", {{{"login", "ann"}}}))), 0);
    EXPECT_EQ(TasksThere(), "a::ann");
}

TEST_P(WaitingLoadTest, SourceThatIsNamedTwiceIsLoadedOnce) {
    const auto tasks = Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}}, {{"source_id", "b"}}});
    EXPECT_EQ(Load(Together(Together(tasks, tasks), People("p", {{{"login", "ann"}}}))), 0);
    EXPECT_EQ(TasksThere(), "b::\na::ann");
    EXPECT_THAT(Said(), HasSubstr("5 records read: 3 created, 0 updated, 0 rejected, 2 skipped"));
}

TEST_P(WaitingLoadTest, FreshLoadForgetsWhatWaited) {
    const auto tasks = Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}},
                                   {{"source_id", "b"}, {"votes", "many"}},
                                   {{"source_id", "c"}, {"votes", "many"}}});
    m_options.maxRejects = 0;
    EXPECT_EQ(Load(tasks), 1);
    EXPECT_EQ(WaitingInTheJournal(), "1");
    m_options.maxRejects.reset();
    m_options.fresh = true;
    EXPECT_EQ(Load(tasks), 1);
    EXPECT_EQ(WaitingInTheJournal(), "0");
    EXPECT_THAT(Said(), HasSubstr("3 rejected"));
}

TEST_P(WaitingLoadTest, RejectedRecordThatIsTriedAgainMayWait) {
    const auto tasks = Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}}});
    EXPECT_EQ(Load(tasks), 1);
    m_options.retryRejected = true;
    EXPECT_EQ(Load(Together(tasks, People("p", {{{"login", "ann"}}}))), 0);
    EXPECT_EQ(TasksThere(), "a::ann");
    EXPECT_EQ(Query("SELECT count(*) FROM zt_journal_reject"), "0");
    EXPECT_EQ(Query("SELECT sum(rejected) FROM zt_journal"), "0");
}

TEST_P(WaitingLoadTest, RecordsThatTheDatabaseRefusesAreFoundAmongThoseThatWaited) {
    Execute("CREATE UNIQUE INDEX by_hand ON task (title)");
    std::vector<Fields> tasks;
    for (int i = 0; i < 250; ++i) {
        tasks.push_back({{"source_id", std::to_string(i)},
                         {"title", i % 100 == 7 ? "same" : std::to_string(i)},
                         {"owner", "ann"}});
    }
    EXPECT_EQ(Load(Together(Tasks("t", tasks), People("p", {{{"login", "ann"}}}))), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM task"), "248");
    EXPECT_EQ(Query("SELECT max(dbid) FROM task"), "248");
    EXPECT_THAT(Said(), AllOf(HasSubstr("record 108 (107)"), HasSubstr("record 208 (207)"),
                              HasSubstr("2 rejected")));
}

TEST_P(WaitingLoadTest, CheckForetellsIt) {
    const auto sources = Together(
        Tasks("t", {{{"source_id", "a"}, {"owner", "ann"}}, {{"source_id", "b"}, {"owner", "x"}}}),
        People("p", {{{"login", "ann"}}}));
    m_options.database = m_database;
    m_options.sources = sources;
    std::ostringstream out;
    std::ostringstream err;
    EXPECT_EQ(RunCheck(m_options, out, err), 1);
    EXPECT_THAT(err.str(), HasSubstr("would be rejected: "));
    EXPECT_THAT(out.str(), AllOf(HasSubstr("2 would be created"), HasSubstr("1 rejected"),
                                 HasSubstr("2 records waited for others")));
    EXPECT_EQ(Query("SELECT count(*) FROM person"), "0");
    EXPECT_EQ(WaitingInTheJournal(), "0");
}

TEST_P(WaitingLoadTest, ReportCountsThem) {
    m_options.report = m_folder.File("report.json");
    EXPECT_EQ(Load(People("p", Chain(3))), 0);
    std::ifstream file(m_options.report);
    const std::string report{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(report, HasSubstr("\"waited\":2,"));
}

ON_EACH_ENGINE(WaitingLoadTest);

}  // namespace
}  // namespace tool
