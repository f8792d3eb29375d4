// The records of a group are gathered and written together. What is told of them, and what becomes
// of them, is as if each had been written by itself, as it is where a trace is asked for.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <string>
#include <tuple>

#include "load_fixture.h"
#include "random_load.h"

namespace tool {
namespace {

using testing::HasSubstr;

class RefusedGroupTest : public OnEachEngine<LoadFixture> {
  protected:
    std::string Bugs() { return Configuration("bugs.xml", "record", "bug", "source_id"); }
};

TEST_P(RefusedGroupTest, RecordThatTheDatabaseRefusesIsRejectedByItself) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    EXPECT_EQ(Load({Bugs(), Records("data.xml", {{{"source_id", "a"}, {"title", "A"}},
                                                 {{"source_id", "b"}, {"title", "A"}},
                                                 {{"source_id", "c"}, {"title", "C"}}})}),
              1);
    EXPECT_EQ(Query("SELECT id || source_id FROM bug ORDER BY dbid"), "BUG00000001a\nBUG00000002c");
    EXPECT_THAT(Said(), HasSubstr("record 2 (b)"));
    EXPECT_THAT(Said(), HasSubstr("3 records read: 2 created, 0 updated"));
    EXPECT_EQ(Query("SELECT created || ' ' || rejected || ' ' || complete FROM zt_journal"),
              "2 1 1");
}

TEST_P(RefusedGroupTest, RejectOfAGroupThatIsDoneAgainIsReportedOnce) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    m_options.rejects = m_folder.Path() / "rejects";
    EXPECT_EQ(Load({Bugs(), Records("data.xml", {{{"source_id", "a"}, {"title", "A"}},
                                                 {{"source_id", "b"}, {"votes", "many"}},
                                                 {{"source_id", "c"}, {"title", "A"}}})}),
              1);
    const std::string said = Said();
    EXPECT_EQ(said.find("record 2 (b)"), said.rfind("record 2 (b)"));
    EXPECT_LT(said.find("record 2 (b)"), said.find("record 3 (c)"));
    EXPECT_THAT(said, HasSubstr("2 rejected"));
}

TEST_P(RefusedGroupTest, LaterGroupsAreGatheredAgain) {
    Execute("CREATE UNIQUE INDEX by_hand ON bug (title)");
    std::vector<Fields> records;
    for (int i = 0; i < 350; ++i) {
        const std::string id = std::to_string(i);
        records.push_back({{"source_id", id}, {"title", i % 120 == 7 ? "same" : id}});
    }
    EXPECT_EQ(Load({Bugs(), Records("data.xml", records)}), 1);
    EXPECT_EQ(Query("SELECT count(*) FROM bug"), "348");
    EXPECT_EQ(Query("SELECT max(dbid) FROM bug"), "348");
}

// It is no part of the group, which would undo it and keep others waiting while it is made.
TEST_P(RefusedGroupTest, IndexThatItsSearchesTakeStays) {
    m_options.wholePackets = true;
    EXPECT_EQ(
        Load({Configuration("bugs.xml", "record", "bug", "title", "<updaterecord name=\"TRUE\"/>"),
              Records("data.xml", {{{"title", "nowhere"}}})}),
        1);
    EXPECT_EQ(Query(IsFile() ? "SELECT count(*) FROM sqlite_master WHERE name LIKE 'zt_search_%'"
                             : "SELECT count(*) FROM pg_class WHERE relname LIKE 'zt_search_%' AND "
                               "relnamespace = current_schema()::regnamespace"),
              "1");
}

ON_EACH_LAYOUT(RefusedGroupTest);

class GroupOrOneByOneTest : public testing::TestWithParam<std::tuple<Engine, std::uint64_t>> {
  protected:
    static std::string Load(RandomLoad::Way way) {
        const auto [engine, seed] = GetParam();
        return RandomLoad(engine, seed).Run(way);
    }
};

TEST_P(GroupOrOneByOneTest, LoadAtRandomComesToTheSame) {
    const std::string oneByOne = Load(RandomLoad::Way::OneByOne);
    EXPECT_THAT(oneByOne, HasSubstr("rejected"));
    EXPECT_EQ(Load(RandomLoad::Way::Gathered), oneByOne);
    EXPECT_EQ(Load(RandomLoad::Way::LookingAhead), oneByOne);
}

INSTANTIATE_TEST_SUITE_P(On, GroupOrOneByOneTest,
                         testing::Combine(testing::Values(Engine::Sqlite, Engine::Postgres,
                                                          Engine::PostgresSharded),
                                          testing::Range<std::uint64_t>(1, 1 + SeedsOr(2))),
                         [](const auto& test) {
                             return fmt::format("{}_seed_{}",
                                                testing::PrintToString(std::get<0>(test.param)),
                                                std::get<1>(test.param));
                         });

}  // namespace
}  // namespace tool
