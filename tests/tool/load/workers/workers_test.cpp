// What a load comes to does not depend on how many workers go through its records ahead.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <array>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "load_fixture.h"
#include "pauses.h"
#include "random_load.h"
#include "tool/commands/check_command.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::HasSubstr;

class AnyNumberOfWorkersTest : public testing::TestWithParam<std::tuple<Engine, std::uint64_t>> {};

TEST_P(AnyNumberOfWorkersTest, LoadAtRandomComesToTheSame) {
    if (TestServer() == nullptr) {
        GTEST_SKIP() << "there is no PostgreSQL server";
    }
    const auto [engine, seed] = GetParam();
    constexpr std::size_t few = 3;  // records in a group
    constexpr std::array<std::size_t, 3> numbers = {2, 4, 7};
    const std::size_t workers = numbers.at(seed % numbers.size());
    // The index that RandomLoad makes may refuse two values that a larger group holds at the same
    // time and smaller ones do not, so both loads have groups of one size.
    RandomLoad alone(engine, seed);
    alone.SetWorkers(1, few, {});
    const std::string one = alone.Run();
    EXPECT_THAT(one, HasSubstr("rejected"));
    RandomLoad load(engine, seed);
    load.SetWorkers(workers, few, Pauses(seed));
    EXPECT_EQ(load.Run(), one) << workers << " workers";
    EXPECT_GT(load.Ahead(), 0);
}

INSTANTIATE_TEST_SUITE_P(On, AnyNumberOfWorkersTest,
                         testing::Combine(testing::Values(Engine::Postgres,
                                                          Engine::PostgresSharded),
                                          testing::Range<std::uint64_t>(1, 1 + SeedsOr(1))),
                         [](const auto& test) {
                             return fmt::format("{}_seed_{}",
                                                testing::PrintToString(std::get<0>(test.param)),
                                                std::get<1>(test.param));
                         });

class WorkersTest : public OnEachEngine<LoadFixture> {
  protected:
    WorkersTest() {
        m_options.workers = 3;
        m_options.waitsForWorkers = true;
        m_options.report = m_folder.Path() / "report.json";
    }

    std::string Bugs(std::string_view more = "") {
        return Configuration("bugs.xml", "record", "bug", "source_id", more);
    }

    static constexpr const char* kUpdate =
        "<updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>";
};

// Of so many records, one after the other, each its own.
std::vector<Fields> Distinct(int count) {
    std::vector<Fields> records;
    for (int i = 0; i < count; ++i) {
        const std::string id = std::to_string(i);
        records.push_back({{"source_id", id}, {"title", "title " + id}});
    }
    return records;
}

TEST_P(WorkersTest, RecordsAreNumberedInTheOrderOfTheSource) {
    EXPECT_EQ(Load({Bugs(), Records("data.xml", Distinct(1050))}), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE dbid = CAST(source_id AS bigint) + 1 "
                    "AND id = 'BUG' || lpad(CAST(dbid AS text), 8, '0')"),
              "1050");
    EXPECT_THAT(Said(), HasSubstr("1,050 records read: 1,050 created"));
    EXPECT_THAT(Report(), HasSubstr(R"("workers":{"count":3,"ahead":11,"in_turn":0})"));
}

TEST_P(WorkersTest, LaterRecordsChangeEarlierOnes) {
    std::vector<Fields> records;
    for (int i = 0; i < 900; ++i) {
        records.push_back({{"source_id", std::to_string(i % 90)}, {"title", std::to_string(i)}});
    }
    EXPECT_EQ(Load({Bugs(kUpdate), Records("data.xml", records)}), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE title = CAST(dbid + 809 AS text) "
                    "AND zt_version = 10"),
              "90");
}

TEST_P(WorkersTest, LoadGoesOnWhereItStopped) {
    std::vector<Fields> records = Distinct(950);
    records[420] = {{"source_id", "odd"}, {"votes", "many"}};
    m_options.maxRejects = 0;
    const std::string data = Records("data.xml", records);
    Load({Bugs(), data});
    EXPECT_THAT(Said(), HasSubstr("Stopped"));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "420");
    m_options.maxRejects.reset();
    EXPECT_EQ(Load({Bugs(), data}), 1);
    EXPECT_EQ(Query("SELECT count(*) || ' ' || max(dbid) FROM bug"), "949 949");
}

// What one group merges, the group after it does not undo.
TEST_P(WorkersTest, RefusedGroupTakesNoneOfThoseBeforeItAlong) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    Load({Bugs(kUpdate), Records("first.xml", {{{"source_id", "0"}, {"title", "taken"}}})});
    m_options.groupRecords = 2;
    EXPECT_EQ(Load({Bugs(kUpdate), Records("data.xml", {{{"source_id", "1"}, {"title", "taken"}},
                                                        {{"source_id", "1"}, {"title", "free"}},
                                                        {{"source_id", "2"}, {"title", "two"}},
                                                        {{"source_id", "3"}, {"title", "three"}},
                                                        {{"source_id", "4"}, {"title", "taken"}},
                                                        {{"source_id", "5"}, {"title", "five"}}})}),
              1);
    EXPECT_EQ(Query("SELECT source_id || title FROM bug ORDER BY dbid"),
              "0taken\n1free\n2two\n3three\n5five");
    EXPECT_THAT(Said(), HasSubstr("record 5 (4)"));
    EXPECT_THAT(Said(), HasSubstr("1 rejected"));
}

// By the time the last groups are given to the workers, the first record waits.
class WorkersAndWaitingTest : public WorkersTest {
  protected:
    static constexpr std::uint64_t kLate = 2;  // groups, at least
    static constexpr int kCount = 900;
};

TEST_P(WorkersAndWaitingTest, RecordsThatNothingWaitsForAreDoneAhead) {
    std::vector<Fields> records = Distinct(kCount);
    records[0].push_back({"owner", "late"});
    EXPECT_EQ(Load({Bugs(), Records("data.xml", records),
                    Configuration("users.xml", "record", "user", "login"),
                    Records("late.xml", {{{"login", "late"}, {"email", "l"}}})}),
              0);
    EXPECT_EQ(Query("SELECT dbid FROM bug WHERE source_id = '0'"), "900");
    EXPECT_GE(GroupsAhead(Report()), kLate);
}

TEST_P(WorkersAndWaitingTest, NothingOvertakesARecordOfItsIdThatWaits) {
    std::vector<Fields> records = Distinct(kCount);
    records[0].push_back({"owner", "late"});
    records[850] = {{"source_id", "0"}, {"title", "later"}};
    EXPECT_EQ(Load({Bugs(kUpdate), Records("data.xml", records),
                    Configuration("users.xml", "record", "user", "login"),
                    Records("late.xml", {{{"login", "late"}, {"email", "l"}}})}),
              0);
    EXPECT_EQ(Query("SELECT dbid || title || zt_version FROM bug WHERE source_id = '0'"),
              "899later2");
}

TEST_P(WorkersAndWaitingTest, RecordIsTriedAsSoonAsWhatItWaitsForHasCome) {
    std::vector<Fields> records = Distinct(kCount);
    records[0].push_back({"twin_of", "850"});
    EXPECT_EQ(Load({Bugs("<duplicate_id name=\"twin_of\"/>"), Records("data.xml", records)}), 0);
    EXPECT_EQ(Query("SELECT source_id FROM bug WHERE dbid BETWEEN 850 AND 852 ORDER BY dbid"),
              "850\n0\n851");
}

TEST_P(WorkersTest, AnotherLoadOfTheSourceIsPassedOver) {
    const std::string data = Records("data.xml", Distinct(350));
    Load({Bugs(), data});
    EXPECT_EQ(Load({Bugs(), data}), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded"));
}

class RehearsalWithWorkersTest : public WorkersTest {
  protected:
    // Returns what was said.
    std::string Check(std::vector<std::string> sources) {
        m_options.database = m_database;
        m_options.sources = std::move(sources);
        std::ostringstream out;
        RunCheck(m_options, out, out);
        return out.str();
    }
};

TEST_P(RehearsalWithWorkersTest, GroupsAreDoneAheadAndNothingStays) {
    EXPECT_THAT(Check({Bugs(), Records("data.xml", Distinct(1050))}),
                HasSubstr("1,050 records read: 1,050 would be created"));
    EXPECT_THAT(Report(), HasSubstr(R"("workers":{"count":3,"ahead":11,"in_turn":0})"));
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "0");
}

TEST_P(RehearsalWithWorkersTest, WhatAnEarlierSourceWouldHaveWrittenIsSeen) {
    const std::string data = Records("data.xml", Distinct(250));
    const std::string more = Records("more.xml", Distinct(350));
    EXPECT_THAT(Check({Bugs(kUpdate), data, more}), HasSubstr("350 would be created, 250 updated"));
    EXPECT_THAT(Report(), HasSubstr(R"("ahead":4,"in_turn":3)"));
}

TEST_P(RehearsalWithWorkersTest, GroupThatTheDatabaseRefusesIsUndoneByItself) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    std::vector<Fields> records = Distinct(350);
    records[220][1].second = records[130][1].second;
    EXPECT_THAT(Check({Bugs(), Records("data.xml", records)}),
                HasSubstr("349 would be created, 0 updated, 1 rejected"));
}

ON_A_SERVER_IN_EACH_LAYOUT(WorkersTest);
ON_A_SERVER_IN_EACH_LAYOUT(WorkersAndWaitingTest);
ON_A_SERVER_IN_EACH_LAYOUT(RehearsalWithWorkersTest);

class OneWorkerTest : public LoadFixture {
  protected:
    std::string Refusal() {
        m_options.workers = 2;
        try {
            Load({Records("data.xml", {})});
        } catch (const UsageError& error) {
            return error.what();
        }
        return "";
    }
};

TEST_F(OneWorkerTest, FileTakesOneOnly) {
    EXPECT_THAT(Refusal(), HasSubstr("--workers 2: a database in a file has one writer"));
}

TEST_F(OneWorkerTest, TracesArePutInOrderByOneOnly) {
    m_database = "postgresql:///nowhere";
    m_options.trace = m_folder.Path() / "trace";
    EXPECT_THAT(Refusal(), HasSubstr("--workers 2: --trace"));
}

}  // namespace
}  // namespace tool
