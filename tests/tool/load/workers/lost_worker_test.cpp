// A load with workers comes to what it comes to without them and undisturbed, whichever of its
// connections are lost, and whoever else locks its records.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <atomic>
#include <csignal>
#include <map>
#include <regex>
#include <string>
#include <thread>
#include <vector>

#include "compared_load.h"
#include "proxied_load.h"
#include "recorddb/errors.h"
#include "recorddb/sql.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;
using Fate = ServerProxy::Fate;
using Message = ServerProxy::Message;
using Side = ServerProxy::Side;

bool IsOfMain(const Message& message) {
    return message.connection == 0;
}

class LostWorker : public testing::Test {
  protected:
    // Those of the users and of taking the sources up.
    static constexpr int kFirstCommits = 4;
    int m_commits = 0;

    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
    }

    // What a load by itself comes to.
    static const std::string& Undisturbed() {
        static const std::string kResult = [] {
            ProxiedLoad load;
            EXPECT_EQ(load.Run([](const Message& /*message*/) { return Fate::Pass; }), 1);
            return load.Result();
        }();
        return kResult;
    }

    // A load with workers, in small groups; returns what it has said.
    static std::string ExpectTheSame(const ServerProxy::Watch& watch, bool leavesToWorkers = true,
                                     std::size_t groupsTogether = 1) {
        constexpr std::size_t few = 10;
        ProxiedLoad load;
        load.m_options.workers = 4;
        load.m_options.groupRecords = few;
        load.m_options.waitsForWorkers = leavesToWorkers;
        load.m_options.groupsTogether = groupsTogether;
        EXPECT_EQ(load.Run(watch), 1) << load.Said();
        EXPECT_EQ(load.Result(), Undisturbed());
        EXPECT_EQ(load.RejectsNaming("s37"), 1);
        return load.Said();
    }
};

TEST_F(LostWorker, CommitOfWhatWasDoneAheadIsKnownOrDoneAgain) {
    for (const Side side : {Side::Client, Side::Server}) {
        for (const int place : {6, 15}) {
            int commits = 0;
            const std::string said = ExpectTheSame([&](const Message& message) {
                commits += message.from == side && IsCommit(message) ? 1 : 0;
                return commits == place && IsOfMain(message) && IsCommit(message) ? Fate::Cut
                                                                                  : Fate::Pass;
            });
            EXPECT_THAT(said, HasSubstr("connected again"));
        }
    }
}

TEST_F(LostWorker, CommitOfSeveralGroupsIsKnownOrDoneAgain) {
    for (const Side side : {Side::Client, Side::Server}) {
        bool isCut = false;
        const std::string said = ExpectTheSame(
            [&](const Message& message) {
                const bool cuts = !isCut && message.from == side && IsOfMain(message) &&
                                  IsCommit(message) && ++m_commits > kFirstCommits;
                isCut = isCut || cuts;
                return cuts ? Fate::Cut : Fate::Pass;
            },
            true, kGroupsTogether);
        EXPECT_THAT(said, HasSubstr("connected again"));
        m_commits = 0;
    }
}

TEST_F(LostWorker, ConnectionsOfWorkersMayBeLostAtAnyMessage) {
    for (const int place : {2, 20, 60}) {
        std::map<std::size_t, int> counts;
        const std::string said = ExpectTheSame([&](const Message& message) {
            const bool isCut = !IsOfMain(message) && ++counts[message.connection] == place &&
                               message.connection <= 4;
            return isCut ? Fate::Cut : Fate::Pass;
        });
        EXPECT_THAT(said, Not(HasSubstr("connected again")));
    }
}

// As when the server is started again.
TEST_F(LostWorker, AllConnectionsMayBeLostAtOnce) {
    int commits = 0;
    std::map<std::size_t, pid_t> backends;
    ExpectTheSame([&](const Message& message) {
        if (BackendIn(message) != 0) {
            backends[message.connection] = BackendIn(message);
        }
        commits += message.from == Side::Client && IsCommit(message) ? 1 : 0;
        if (commits == 10) {
            ++commits;
            for (const auto& [connection, backend] : backends) {
                kill(backend, SIGTERM);
            }
        }
        return Fate::Pass;
    });
}

TEST_F(LostWorker, ServerThatTakesOneConnectionOnlyIsEnoughAndToldOnce) {
    const std::string said = ExpectTheSame(
        [](const Message& message) { return IsOfMain(message) ? Fate::Pass : Fate::Cut; });
    const std::size_t told = said.find("the load goes on with fewer workers");
    EXPECT_NE(told, std::string::npos) << said;
    EXPECT_EQ(said.find("fewer workers", told + 40), std::string::npos) << said;
}

// Workers get their answers when most of the load has been done.
TEST_F(LostWorker, NobodyWaitsForAServerThatDoesNotAnswerWorkers) {
    int commits = 0;
    constexpr int late = 20;
    ExpectTheSame(
        [&](const Message& message) {
            commits += message.from == Side::Client && IsCommit(message) ? 1 : 0;
            return IsOfMain(message) || commits >= late ? Fate::Pass : Fate::Hold;
        },
        false);
}

// Records that another program locks, in an order of its own.
class ContestedLoad : public ComparedLoad {
  public:
    ContestedLoad() : ComparedLoad(Engine::Postgres) {
        LoadAll({{Configuration("1.xml", "record", "bug", "source_id"),
                  Records("1-data.xml", Bugs("first"))}});
    }

    // Updates all of them; returns what is in the database then.
    std::string Update() {
        // The server finds out about a deadlock in the load first.
        const std::string direct = m_database;
        m_database += "&options=-cdeadlock_timeout%3D1ms%20-clock_timeout%3D1h" + m_isolation;
        LoadAll(
            {{Configuration("2.xml", "record", "bug", "source_id", "<updaterecord name=\"TRUE\"/>"),
              Records("2-data.xml", Bugs("second"))}});
        m_database = direct;
        return Tables();
    }

    // Two programs lock records. The load comes to wait for the first one (s20), then the second
    // one for a record that the load holds (s0). When the first lets go, the load runs into the
    // lock of the second (s39): a deadlock.
    void Contest() {
        const std::string patient = m_database + "&options=-clock_timeout%3D1h";
        const auto one = recorddb::sql::Open(patient, recorddb::sql::OpenMode::ReadWrite);
        const auto other = recorddb::sql::Open(patient, recorddb::sql::OpenMode::ReadWrite);
        const auto looks = recorddb::sql::Open(patient, recorddb::sql::OpenMode::ReadOnly);
        one->ExecuteScript("BEGIN; UPDATE bug SET votes = 7 WHERE source_id = 's20'");
        other->ExecuteScript(
            "SET deadlock_timeout = '1h'; BEGIN; UPDATE bug SET votes = 7 WHERE source_id = 's39'");
        m_isReady = true;
        WaitForWaiting(*looks, 1);
        const std::jthread waiting([&other] {
            other->ExecuteScript("UPDATE bug SET votes = 7 WHERE source_id = 's0'; ROLLBACK");
        });
        WaitForWaiting(*looks, 2);
        one->ExecuteScript("ROLLBACK");
    }
    bool IsReady() const { return m_isReady; }

    // From here on, transactions that do not say otherwise are serializable.
    void Isolate() { m_isolation = "%20-cdefault_transaction_isolation%3Dserializable"; }

    using LoadFixture::Report;

  private:
    // So many wait for locks of records.
    static void WaitForWaiting(recorddb::sql::Connection& looks, std::int64_t count) {
        while (recorddb::sql::QueryInt(
                   looks.Prepare("SELECT count(DISTINCT pid) FROM pg_locks "
                                 "WHERE NOT granted AND locktype <> 'advisory'")) != count) {
            std::this_thread::yield();
        }
    }

    static std::vector<Fields> Bugs(const std::string& title) {
        std::vector<Fields> bugs;
        for (int i = 0; i < 40; ++i) {
            bugs.push_back({{"source_id", fmt::format("s{}", i)}, {"title", title}});
        }
        return bugs;
    }

    std::string m_isolation;
    std::atomic<bool> m_isReady = false;
};

// The load comes to what it comes to alone, after one try more.
void ExpectOneRetry(ContestedLoad& contested) {
    ContestedLoad alone;
    const std::string result = alone.Update();
    contested.SetWorkers(4, 40, {});
    std::jthread other([&contested] { contested.Contest(); });
    while (!contested.IsReady()) {
        std::this_thread::yield();
    }
    EXPECT_EQ(contested.Update(), result);
    EXPECT_THAT(contested.Report(), HasSubstr("\"retried\":1"));
}

TEST_F(LostWorker, DeadlockWithAnotherProgramIsGotOver) {
    ContestedLoad contested;
    ExpectOneRetry(contested);
}

// The server itself refuses the writing of records, whenever the count of such tries is one of
// those given: as where transactions are serializable, or a cluster's machines disagree.
class RefusedLoad : public ComparedLoad {
  public:
    explicit RefusedLoad(const std::string& refused) : ComparedLoad(Engine::Postgres) {
        Execute("CREATE SEQUENCE tries");
        Execute(fmt::format(
            "CREATE FUNCTION refuse(title text) RETURNS boolean LANGUAGE plpgsql AS $$BEGIN "
            "IF nextval('tries') = ANY ('{{{}}}') THEN "
            "RAISE EXCEPTION 'could not serialize access' USING ERRCODE = '40001'; END IF; "
            "RETURN true; END$$",
            refused));
        Execute("ALTER TABLE bug ADD CHECK (refuse(title))");
    }

    std::string Run() {
        std::vector<Fields> bugs;
        for (int i = 0; i < 300; ++i) {
            bugs.push_back({{"source_id", std::to_string(i % 200)},
                            {"title", fmt::format("title {}", i)},
                            {"votes", i == 150 ? "many" : "1"}});
        }
        const std::string told =
            LoadAll({{Configuration("1.xml", "record", "bug", "source_id",
                                    "<updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>"),
                      Records("1-data.xml", bugs)}});
        return told + Query(
                          "SELECT string_agg(id || source_id || title || zt_version, ',' "
                          "ORDER BY dbid) FROM bug");
    }

    using LoadFixture::Query;
    using LoadFixture::Report;
};

TEST_F(LostWorker, SerializationFailuresAreGotOver) {
    static const std::regex kRetries(R"(,"retried":[0-9]+|[^\n]*were done again[^\n]*\n)");
    RefusedLoad alone("");
    const std::string result = alone.Run();
    for (const std::size_t workers : {1U, 4U}) {
        RefusedLoad refused("5,60,61,250,251,252");
        refused.SetWorkers(workers, 10, {});
        const std::string told = refused.Run();
        EXPECT_THAT(refused.Report(), HasSubstr("\"retried\":6"));
        EXPECT_EQ(std::regex_replace(told, kRetries, ""), result) << workers << " workers";
    }
}

TEST_F(LostWorker, FailuresThatDoNotPassEndTheLoad) {
    std::string all = "1";
    for (int i = 2; i < 2000; ++i) {
        all += fmt::format(",{}", i);
    }
    RefusedLoad refused(all);
    refused.SetWorkers(2, 10, {});
    EXPECT_THROW(refused.Run(), recorddb::sql::Error);
    EXPECT_EQ(refused.Query("SELECT count(*) FROM bug"), "0");
}

// A load says for itself how its transactions are isolated, so a default of the server's changes
// nothing: it waits for another program's lock and goes on with what that has written.
TEST_F(LostWorker, DefaultIsolationOfTheServerChangesNothing) {
    ContestedLoad contested;
    contested.Isolate();
    ExpectOneRetry(contested);
}

}  // namespace
}  // namespace tool
