// A source that is as hard on the order of things as can be comes to the same with any number of
// workers and in each layout, and to what check foretells.
#include "nasty_source.h"

#include <gmock/gmock.h>

#include <string>

#include "pauses.h"

namespace tool {
namespace {

using testing::HasSubstr;

class NastySourceTest : public testing::Test {
  protected:
    static constexpr std::size_t kFewRecords = 5;  // in a group

    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
    }

    // What a rehearsal says and foretells, and what the load comes to.
    struct Outcome {
        std::string checked;
        std::string told;
        std::string tables;
        std::string rows;  // of the tables that each layout has
    };

    static Outcome OneWorker(Engine engine) {
        NastySource one(engine);
        Outcome outcome;
        outcome.checked = one.Check();
        const std::string foretold = one.Foretold();
        outcome.told = one.LoadAll({one.Sources()});
        outcome.tables = one.Tables();
        outcome.rows = one.RowsOfAnyLayout();
        EXPECT_EQ(one.Came(), foretold);
        EXPECT_THAT(outcome.told, HasSubstr("waited for others"));
        return outcome;
    }

    static void ExpectTheSameOf(std::size_t workers, Engine engine, const Outcome& one) {
        SCOPED_TRACE(fmt::format("{} workers", workers));
        NastySource many(engine);
        many.SetWorkers(workers, kFewRecords, {});
        EXPECT_EQ(many.Check(), one.checked);
        EXPECT_GT(many.ForetoldAhead(), 0);
        many.SetWorkers(workers, kFewRecords, Pauses(workers));
        EXPECT_EQ(many.LoadAll({many.Sources()}), one.told);
        EXPECT_EQ(many.Tables(), one.tables);
        EXPECT_GT(many.Ahead(), 0);
    }
};

TEST_F(NastySourceTest, ComesToTheSameWithAnyNumberOfWorkers) {
    const Outcome one = OneWorker(Engine::Postgres);
    NastySource file(Engine::Sqlite);
    EXPECT_EQ(file.LoadAll({file.Sources()}), one.told) << "SQLite";
    for (const std::size_t workers : {2U, 4U, 7U}) {
        ExpectTheSameOf(workers, Engine::Postgres, one);
    }
}

TEST_F(NastySourceTest, ComesToTheSameInTheShardedLayout) {
    const Outcome plain = OneWorker(Engine::Postgres);
    const Outcome one = OneWorker(Engine::PostgresSharded);
    EXPECT_EQ(one.checked, plain.checked);
    EXPECT_EQ(one.told, plain.told);
    EXPECT_EQ(one.rows, plain.rows);
    EXPECT_THAT(one.tables, HasSubstr("zt_key|"));
    ExpectTheSameOf(4, Engine::PostgresSharded, one);
}

}  // namespace
}  // namespace tool
