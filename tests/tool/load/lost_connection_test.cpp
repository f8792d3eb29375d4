// A load whose connection to the server is cut at counted messages goes on by itself, and comes to
// what it comes to when nobody disturbs it.
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <string>
#include <utility>

#include "proxied_load.h"
#include "recorddb/errors.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using Fate = ServerProxy::Fate;
using Message = ServerProxy::Message;
using Side = ServerProxy::Side;
using Users = ProxiedLoad::Users;

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

// A load in small groups: two, and some more.
class LoadOfThreeGroups : public ProxiedLoad {
  public:
    explicit LoadOfThreeGroups(Users users = Users::First) : ProxiedLoad(users, 70) {
        m_options.groupRecords = 25;
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
        LoadOfThreeGroups fixture(users);
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
        LoadOfThreeGroups load(users);
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
        EXPECT_EQ(load.RejectsNaming("s57"), 1);
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
    LoadOfThreeGroups load;
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
    LoadOfThreeGroups load;
    load.m_options.retryFor = std::chrono::seconds(0);
    EXPECT_THROW(load.Run([](const Message& message) {
        return message.from == Side::Client && IsCommit(message) ? Fate::Cut : Fate::Pass;
    }),
                 recorddb::sql::Error);
}

TEST_F(LostConnection, EndsTheLoadWhenNoOtherOneIsToBeHadInTime) {
    ProxiedLoad load;
    load.m_options.retryFor = std::chrono::seconds(1);
    bool isGone = false;
    try {
        load.Run([&](const Message& message) {
            isGone = isGone || (message.from == Side::Client && IsCommit(message));
            return isGone ? Fate::Cut : Fate::Pass;
        });
        ADD_FAILURE() << "the load goes on";
    } catch (const recorddb::sql::Error& error) {
        EXPECT_EQ(error.Kind(), recorddb::sql::ErrorKind::ConnectionLost);
        EXPECT_THAT(error.DriverText(), HasSubstr("and there is no other one: "));
    }
}

// Who connects would wait for ever.
TEST_F(LostConnection, EndsTheLoadInTimeWhenServersFallSilent) {
    LoadOfThreeGroups load;
    load.m_options.retryFor = std::chrono::seconds(1);
    load.m_database += "&connect_timeout=0";
    bool isGone = false;
    try {
        load.Run([&](const Message& message) {
            const bool goes = !isGone && message.from == Side::Client && IsCommit(message);
            isGone = isGone || goes;
            return goes ? Fate::Cut : isGone ? Fate::Hold : Fate::Pass;
        });
        ADD_FAILURE() << "the load goes on";
    } catch (const recorddb::sql::Error& error) {
        EXPECT_EQ(error.Kind(), recorddb::sql::ErrorKind::ConnectionLost);
        EXPECT_THAT(error.DriverText(), HasSubstr("timeout"));
    }
}

}  // namespace
}  // namespace tool
