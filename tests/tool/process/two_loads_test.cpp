// Two loads at once into one database. What holds, holds whichever of them is the faster one.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <functional>
#include <sstream>

#include "child_process.h"
#include "load_fixture.h"
#include "server_proxy.h"

namespace tool {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

// Several groups.
constexpr int kBugsOfASource = 350;

class TwoLoads : public LoadFixture {
  protected:
    explicit TwoLoads(Engine engine) : LoadFixture(engine) {
        // However long the one takes, the other waits for its turn. For files that time is fixed.
        if (!IsFile()) {
            m_database += "&options=-clock_timeout%3D1h";
        }
    }

    // What a load came to: its exit code, what it said, and its report.
    struct Outcome {
        int code;
        std::string said;
        std::string report;

        // A number in the report.
        int Count(const std::string& name) const {
            const std::size_t at = report.find("\"" + name + "\":");
            return at == std::string::npos ? -1 : std::stoi(report.substr(at + name.size() + 3));
        }
    };

    std::vector<std::string> Command(const std::string& report, const std::string& configuration,
                                     const std::string& data) const {
        return {ZTIMPORT, "load", m_database, configuration, data, "--report", ReportFile(report)};
    }

    Outcome Wait(ChildProcess& load, const std::string& report) const {
        const int code = load.Wait();
        std::ostringstream text;
        text << std::ifstream(ReportFile(report)).rdbuf();
        return {code, load.Output(), text.str()};
    }

    std::string ReportFile(const std::string& name) const { return m_folder.File(name + ".json"); }

    // Bugs with the ids first, first + 1 ...
    std::string Bugs(const std::string& file, int first) {
        std::vector<Fields> bugs;
        for (int i = first; i < first + kBugsOfASource; ++i) {
            bugs.push_back({{"source_id", fmt::format("s{}", i)},
                            {"title", fmt::format("{} {}", file, i)},
                            {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
        }
        return Records(file, bugs);
    }

    std::string Creation() { return Configuration("create.xml", "record", "bug", "source_id"); }
};

class TwoLoadsTest : public OnEachEngine<TwoLoads> {};

// A record that is in both sources is created by one load, and updated by the other one.
TEST_P(TwoLoadsTest, OfDifferentSourcesComeToTheirSum) {
    const std::string configuration =
        Configuration("upsert.xml", "record", "bug", "source_id",
                      "<updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>");
    constexpr int kShared = 50;
    const std::string a = Bugs("a.xml", 0);
    const std::string b = Bugs("b.xml", kBugsOfASource - kShared);
    ChildProcess first(Command("a", configuration, a));
    ChildProcess second(Command("b", configuration, b));
    const Outcome ofA = Wait(first, "a");
    const Outcome ofB = Wait(second, "b");
    EXPECT_EQ(ofA.code, 0) << ofA.said;
    EXPECT_EQ(ofB.code, 0) << ofB.said;
    constexpr int kAll = 2 * kBugsOfASource - kShared;
    EXPECT_EQ(ofA.Count("created") + ofB.Count("created"), kAll);
    EXPECT_EQ(ofA.Count("updated") + ofB.Count("updated"), kShared);
    EXPECT_EQ(Query("SELECT count(DISTINCT source_id) || ' ' || max(dbid) FROM bug"),
              fmt::format("{0} {0}", kAll));
    EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE zt_version = 2"), std::to_string(kShared));
    EXPECT_EQ(Query("SELECT created || ' ' || updated || ' ' || complete FROM zt_journal "
                    "WHERE source_name LIKE '%a.xml'"),
              fmt::format("{} {} 1", ofA.Count("created"), ofA.Count("updated")));
}

// Each record comes once, whichever load brings it; one load may be told that the other has taken
// the source over.
TEST_P(TwoLoadsTest, OfOneSourceBringEachRecordOnce) {
    const std::string configuration = Creation();
    const std::string data = Bugs("data.xml", 0);
    ChildProcess first(Command("first", configuration, data));
    ChildProcess second(Command("second", configuration, data));
    const Outcome outcomes[] = {Wait(first, "first"), Wait(second, "second")};
    int created = 0;
    for (const Outcome& outcome : outcomes) {
        EXPECT_THAT(outcome.code, AnyOf(0, 3)) << outcome.said;
        EXPECT_EQ(outcome.code == 3,
                  outcome.said.find("another load of " + data) != std::string::npos)
            << outcome.said;
        created += outcome.Count("created");
    }
    EXPECT_TRUE(outcomes[0].code == 0 || outcomes[1].code == 0);
    EXPECT_EQ(created, kBugsOfASource);
    EXPECT_EQ(Query("SELECT count(*) || ' ' || max(dbid) FROM bug"),
              fmt::format("{0} {0}", kBugsOfASource));
    EXPECT_EQ(Query("SELECT created || ' ' || complete FROM zt_journal"),
              fmt::format("{} 1", kBugsOfASource));
}

ON_EACH_ENGINE(TwoLoadsTest);

class TwoLoadsOnServer : public TwoLoads {
  protected:
    TwoLoadsOnServer() : TwoLoads(Engine::Postgres) {}

    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
    }
};

// The later load comes as a whole between the first two groups of the earlier one, which gives its
// turn up there since it has no workers.
TEST_F(TwoLoadsOnServer, LaterLoadOfASourceTakesItOver) {
    const std::string configuration = Creation();
    const std::string data = Bugs("data.xml", 0);
    const std::string direct = m_database;
    int begins = 0;
    Outcome later;
    const ServerProxy proxy(
        SocketFolderOf(direct), m_folder.Path(), [&](const ServerProxy::Message& message) {
            // The first transaction takes the source up, the second one is the first group.
            if (message.type == 'Q' && message.text.starts_with("BEGIN") && ++begins == 3) {
                ChildProcess load(Command("later", configuration, data));
                later = Wait(load, "later");
            }
            return ServerProxy::Fate::Pass;
        });
    std::vector<std::string> command = Command("earlier", configuration, data);
    command[2] = UrlWithSocketIn(direct, m_folder.Path());
    command.insert(command.end(), {"--workers", "1"});
    ChildProcess load(command);
    const Outcome earlier = Wait(load, "earlier");
    EXPECT_EQ(later.code, 0) << later.said;
    EXPECT_THAT(later.said, HasSubstr("goes on behind record 100,"));
    EXPECT_EQ(later.Count("created"), kBugsOfASource - 100);
    EXPECT_EQ(earlier.code, 3) << earlier.said;
    EXPECT_THAT(earlier.said, HasSubstr("another load of " + data));
    EXPECT_EQ(earlier.Count("created"), 100);
    EXPECT_EQ(Query("SELECT count(*) || ' ' || max(dbid) FROM bug"),
              fmt::format("{0} {0}", kBugsOfASource));
}

}  // namespace
}  // namespace tool
