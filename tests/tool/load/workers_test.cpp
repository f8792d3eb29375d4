// What a load comes to does not depend on how many workers go through its records ahead.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <string>
#include <thread>
#include <tuple>

#include "load_fixture.h"
#include "random_load.h"
#include "tool/process/usage_error.h"

namespace tool {
namespace {

using testing::HasSubstr;

// Lets other threads go first, some times more often than at others.
std::function<void()> Pauses(std::uint64_t seed) {
    return [count = std::make_shared<std::atomic<std::uint64_t>>(seed)] {
        constexpr std::uint64_t factor = 0x9E3779B97F4A7C15U;
        const std::uint64_t chance = (count->fetch_add(1) * factor) >> 58U;
        for (std::uint64_t i = 0; i < chance * chance / 8; ++i) {
            std::this_thread::yield();
        }
    };
}

class AnyNumberOfWorkersTest : public testing::TestWithParam<std::uint64_t> {};

TEST_P(AnyNumberOfWorkersTest, LoadAtRandomComesToTheSame) {
    if (TestServer() == nullptr) {
        GTEST_SKIP() << "there is no PostgreSQL server";
    }
    constexpr std::size_t times = 2;
    const auto with = [](std::size_t workers) {
        return RandomLoad(Engine::Postgres, GetParam(), times)
            .RunWith(workers, Pauses(GetParam() + workers));
    };
    const std::string one = with(1);
    EXPECT_THAT(one, HasSubstr("rejected"));
    for (const std::size_t workers : {2U, 4U, 7U}) {
        EXPECT_EQ(with(workers), one) << workers << " workers";
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, AnyNumberOfWorkersTest,
                         testing::Range<std::uint64_t>(1, 1 + SeedsOr(1)));

class WorkersTest : public LoadFixture {
  protected:
    WorkersTest() : LoadFixture(Engine::Postgres) { m_options.workers = 3; }

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

TEST_F(WorkersTest, RecordsAreNumberedInTheOrderOfTheSource) {
    EXPECT_EQ(Load({Bugs(), Records("data.xml", Distinct(1050))}), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE dbid = CAST(source_id AS bigint) + 1 "
                    "AND id = 'BUG' || lpad(CAST(dbid AS text), 8, '0')"),
              "1050");
    EXPECT_THAT(Said(), HasSubstr("1,050 records read: 1,050 created"));
}

TEST_F(WorkersTest, LaterRecordsChangeEarlierOnes) {
    std::vector<Fields> records;
    for (int i = 0; i < 900; ++i) {
        records.push_back({{"source_id", std::to_string(i % 90)}, {"title", std::to_string(i)}});
    }
    EXPECT_EQ(Load({Bugs(kUpdate), Records("data.xml", records)}), 0);
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE title = CAST(dbid + 809 AS text) "
                    "AND zt_version = 10"),
              "90");
}

TEST_F(WorkersTest, LoadGoesOnWhereItStopped) {
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

TEST_F(WorkersTest, AnotherLoadOfTheSourceIsPassedOver) {
    const std::string data = Records("data.xml", Distinct(350));
    Load({Bugs(), data});
    EXPECT_EQ(Load({Bugs(), data}), 0);
    EXPECT_THAT(Said(), HasSubstr("already loaded"));
}

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
