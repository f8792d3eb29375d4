// A load whose connection to the server is cut at counted messages goes on by itself, and comes to
// what it comes to when nobody disturbs it.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "load_fixture.h"
#include "recorddb/errors.h"
#include "server_proxy.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Fate = ServerProxy::Fate;
using Message = ServerProxy::Message;
using Side = ServerProxy::Side;

// Two groups, and some more.
constexpr int kRecords = 230;

// Tells the messages from the first transaction on, which the first connection has been made
// before.
class AfterTheFirstBegin {
  public:
    bool operator()(const Message& message) {
        m_hasBegun = m_hasBegun || (message.type == 'Q' && message.text.starts_with("BEGIN"));
        return m_hasBegun;
    }

  private:
    bool m_hasBegun = false;
};

// Where the users are read last, the bugs that they own have to wait for them.
enum class Users { First, Last };

// A load through a proxy, of records of which some are rejected.
class ProxiedLoad : public LoadFixture {
  public:
    explicit ProxiedLoad(Users users = Users::First)
        : LoadFixture(Engine::Postgres), m_users(users) {}

    // Loads; `watch` says what becomes of each message. Returns the exit code.
    int Run(const ServerProxy::Watch& watch) {
        m_options.rejects = m_folder.Path() / "rejects";
        m_options.report = m_folder.Path() / "report.json";
        const std::string direct = m_database;
        const ServerProxy proxy(SocketFolderOf(direct), m_folder.Path(), watch);
        m_database = UrlWithSocketIn(direct, m_folder.Path());
        const std::vector<std::string> users = {
            Configuration("c1.xml", "record", "user", "login"),
            Records("users.xml", {{{"login", "ann"}}, {{"login", "bob"}}})};
        std::vector<std::string> sources = {Configuration("c2.xml", "record", "bug", "source_id"),
                                            Records("2.xml", Bugs())};
        sources.insert(m_users == Users::First ? sources.begin() : sources.end(), users.begin(),
                       users.end());
        const int code = Load(sources);
        m_database = direct;
        return code;
    }

    // What the load has told and made, but for what differs from one load to another.
    std::string Result() {
        std::string all = Dump() + Report();
        for (std::size_t at = 0; (at = all.find(m_place.Schema())) != std::string::npos;) {
            all.erase(at, m_place.Schema().size());
        }
        for (std::size_t at = 0; (at = all.find(m_folder.Path().string())) != std::string::npos;) {
            all.erase(at, m_folder.Path().string().size());
        }
        return all;
    }

    std::string Report() const {
        std::ostringstream text;
        text << std::ifstream(m_options.report).rdbuf();
        std::string report = text.str();
        report.erase(report.find("\"seconds\""),
                     report.find("\"rejects\"") - report.find("\"seconds\""));
        return report;
    }

    // How often a text stands in the files of rejected records.
    int RejectsNaming(const std::string& id) const {
        int count = 0;
        for (const auto& file : std::filesystem::directory_iterator(m_options.rejects)) {
            std::ostringstream text;
            text << std::ifstream(file.path()).rdbuf();
            count += text.str().find(">" + id + "<") == std::string::npos ? 0 : 1;
        }
        return count;
    }

    using LoadFixture::m_options;
    using LoadFixture::Said;

    void TestBody() override {}

  private:
    const Users m_users;

    static std::vector<Fields> Bugs() {
        std::vector<Fields> bugs;
        for (int i = 0; i < kRecords; ++i) {
            bugs.push_back({{"source_id", fmt::format("s{}", i)},
                            {"title", fmt::format("Bug {}", i)},
                            {"votes", i % 60 == 37 ? "many" : std::to_string(i)},
                            {"owner", i % 2 == 0 ? "ann" : "bob"},
                            {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
        }
        return bugs;
    }
};

// What an undisturbed load comes to, and how many messages each side says during it.
struct Undisturbed {
    std::string result;
    int said[2] = {0, 0};
    int commits = 0;
};

template <Users users = Users::First>
const Undisturbed& TheUndisturbedLoad() {
    static const Undisturbed kLoad = [] {
        Undisturbed load;
        ProxiedLoad fixture(users);
        AfterTheFirstBegin isAfter;
        EXPECT_EQ(fixture.Run([&](const Message& message) {
            load.said[static_cast<int>(message.from)] += isAfter(message) ? 1 : 0;
            load.commits += message.from == Side::Client && IsCommit(message) ? 1 : 0;
            return Fate::Pass;
        }),
                  1);
        load.result = fixture.Result();
        EXPECT_THAT(fixture.Said(), Not(HasSubstr("lost")));
        return load;
    }();
    return kLoad;
}

class LostConnection : public testing::Test {
  protected:
    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server; scripts/private-server COMMAND runs a "
                            "command with one";
        }
    }

    // A load whose connection meets `fate` once, at the message that `isMeant` says.
    template <Users users = Users::First, typename IsMeant>
    static void ExpectToGoOn(Fate fate, IsMeant isMeant) {
        ProxiedLoad load(users);
        bool hasCut = false;
        EXPECT_EQ(load.Run([&](const Message& message) {
            const bool cuts = !hasCut && isMeant(message);
            hasCut = hasCut || cuts;
            return cuts ? fate : Fate::Pass;
        }),
                  1)
            << load.Said();
        ASSERT_TRUE(hasCut);
        EXPECT_EQ(load.Result(), TheUndisturbedLoad<users>().result);
        EXPECT_EQ(load.RejectsNaming("s37"), 1);
        EXPECT_EQ(load.RejectsNaming("s217"), 1);
        EXPECT_THAT(load.Said(), AllOf(HasSubstr("the connection to the database was lost"),
                                       HasSubstr("connected again")));
    }

    // As above, at the N-th message of a kind, from 1.
    template <Users users = Users::First, typename IsOfKind>
    static void ExpectToGoOnAfter(Fate fate, int place, IsOfKind isOfKind) {
        SCOPED_TRACE(place);
        int count = 0;
        ExpectToGoOn<users>(fate, [&](const Message& message) {
            count += isOfKind(message) ? 1 : 0;
            return count == place;
        });
    }
};

TEST_F(LostConnection, CommitThatDidNotArriveIsDoneAgain) {
    for (int commit = 1; commit <= TheUndisturbedLoad().commits; ++commit) {
        ExpectToGoOnAfter(Fate::Cut, commit, [](const Message& message) {
            return message.from == Side::Client && IsCommit(message);
        });
    }
}

TEST_F(LostConnection, CommitWhoseAnswerIsLostIsNotDoneAgain) {
    for (int commit = 1; commit <= TheUndisturbedLoad().commits; ++commit) {
        ExpectToGoOnAfter(Fate::Cut, commit, [](const Message& message) {
            return message.from == Side::Server && IsCommit(message);
        });
    }
}

TEST_F(LostConnection, WhatWaitedIsDoneOnceToo) {
    const int commits = TheUndisturbedLoad<Users::Last>().commits;
    ASSERT_GT(commits, 6);
    for (const Side side : {Side::Client, Side::Server}) {
        for (int commit = 1; commit <= commits; ++commit) {
            ExpectToGoOnAfter<Users::Last>(Fate::Cut, commit, [side](const Message& message) {
                return message.from == side && IsCommit(message);
            });
        }
    }
}

TEST_F(LostConnection, AnyMessageMayBeTheLastOne) {
    for (const Side side : {Side::Client, Side::Server}) {
        const int said = TheUndisturbedLoad().said[static_cast<int>(side)];
        constexpr int kPlaces = 5;
        ASSERT_GT(said, 10 * kPlaces);
        for (int i = 0; i < kPlaces; ++i) {
            ExpectToGoOnAfter(
                Fate::Cut, 1 + said * i / kPlaces,
                [side, isAfter = AfterTheFirstBegin()](const Message& message) mutable {
                    return isAfter(message) && message.from == side;
                });
        }
    }
}

TEST_F(LostConnection, OrphanThatHoldsTheWritersLockIsEnded) {
    // Both sources are taken up and committed once before the first group of bugs.
    ExpectToGoOnAfter(Fate::Orphan, 4, [](const Message& message) {
        return message.from == Side::Client && IsCommit(message);
    });
}

// The backend gets its SIGCONT when the load, on a new connection, is about to wait for it.
TEST_F(LostConnection, StoppedBackendDoesNotCommitBehindTheLoad) {
    ProxiedLoad load;
    pid_t backend = 0;
    pid_t stopped = 0;
    int commits = 0;
    EXPECT_EQ(load.Run([&](const Message& message) {
        backend = BackendIn(message) != 0 ? BackendIn(message) : backend;
        if (stopped != 0 && message.text.starts_with("BEGIN")) {
            kill(std::exchange(stopped, 0), SIGCONT);
        }
        if (message.from != Side::Client || !IsCommit(message) || ++commits != 4) {
            return Fate::Pass;
        }
        stopped = backend;
        EXPECT_EQ(kill(stopped, SIGSTOP), 0);
        return Fate::Last;
    }),
              1)
        << load.Said();
    EXPECT_EQ(stopped, 0);
    EXPECT_EQ(load.Result(), TheUndisturbedLoad().result);
}

TEST_F(LostConnection, EndsTheLoadWhenItIsNotToBeSought) {
    ProxiedLoad load;
    load.m_options.retryFor = std::chrono::seconds(0);
    EXPECT_THROW(load.Run([](const Message& message) {
        return message.from == Side::Client && IsCommit(message) ? Fate::Cut : Fate::Pass;
    }),
                 recorddb::sql::Error);
}

}  // namespace
}  // namespace tool
