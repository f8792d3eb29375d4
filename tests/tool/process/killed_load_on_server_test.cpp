// A load into a database on a server is killed at counted messages; the same command goes on.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <future>
#include <optional>
#include <sstream>
#include <utility>

#include "child_process.h"
#include "load_fixture.h"
#include "recorddb/database.h"
#include "server_proxy.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;
using Fate = ServerProxy::Fate;
using Message = ServerProxy::Message;
using Side = ServerProxy::Side;

class KilledLoadOnServer : public OnEachEngine<LoadFixture> {
  protected:
    KilledLoadOnServer() {
        std::vector<Fields> bugs;
        for (int i = 0; i < 230; ++i) {
            bugs.push_back({{"source_id", fmt::format("s{}", i)},
                            {"title", fmt::format("Bug {}", i)},
                            {"votes", i % 60 == 37 ? "many" : std::to_string(i)},
                            {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
        }
        m_sources = {Configuration("configuration.xml", "record", "bug", "source_id"),
                     Records("bugs.xml", bugs)};
    }

    // Runs the load as a program of its own, which is killed when `kills` says so of a message.
    void Kill(const std::function<bool(const Message&)>& kills, Fate fate) {
        std::promise<const ChildProcess*> started;
        const std::shared_future<const ChildProcess*> load = started.get_future().share();
        // The proxy goes first, since it may still hand on what the server sent to the load.
        std::optional<ChildProcess> child;
        bool isKilled = false;
        const ServerProxy proxy(SocketFolderOf(m_database), m_folder.Path(),
                                [&](const Message& message) {
                                    if (!isKilled && !kills(message)) {
                                        return Fate::Pass;
                                    }
                                    if (!std::exchange(isKilled, true)) {
                                        load.get()->Signal(SIGKILL);
                                    }
                                    return fate;
                                });
        child.emplace(std::vector<std::string>{
            ZTIMPORT, "load", UrlWithSocketIn(m_database, m_folder.Path()), "--rejects",
            RejectsFolder(), "--workers", m_workers, m_sources[0], m_sources[1]});
        started.set_value(&*child);
        ASSERT_EQ(child->Wait(), 128 + SIGKILL) << child->Output();
    }

    // Kills it at the N-th message of the tool, from 1, after the first transaction has begun.
    void KillAt(int place) {
        int afterBegin = 0;
        Kill(
            [&](const Message& message) {
                const bool begins = message.type == 'Q' && message.text.starts_with("BEGIN");
                afterBegin += message.from == Side::Client && (afterBegin > 0 || begins) ? 1 : 0;
                return afterBegin == place;
            },
            Fate::Cut);
    }

    // What the same command comes to afterwards; returns what it says.
    std::string ExpectCompletion() {
        m_options.rejects = RejectsFolder();
        EXPECT_EQ(Load(m_sources), 1) << Said();
        std::string said = Said();
        EXPECT_EQ(Query("SELECT count(*) FROM bug"), "226");
        EXPECT_EQ(Query("SELECT count(*) FROM bug WHERE id = 'BUG' || lpad(dbid::text, 8, '0')"),
                  "226");
        EXPECT_EQ(Query("SELECT max(dbid) FROM bug"), "226");
        EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), "226");
        EXPECT_EQ(Query("SELECT created || ' ' || rejected || ' ' || next_ordinal || ' ' || "
                        "complete FROM zt_journal"),
                  "226 4 230 1");
        EXPECT_EQ(Query("SELECT count(*) FROM zt_journal_reject"), "4");
        EXPECT_EQ(RejectsSetAside(), 4);
        ExpectAllAsWhenUndisturbed();
        return said;
    }

    // The same load into another database holds the same.
    void ExpectAllAsWhenUndisturbed() {
        const std::string disturbed = DumpWithout(m_place.Schema());
        const std::string database = m_database;
        const DatabasePlace other(GetParam(), "");
        recorddb::Database::Create(
            other.Location(),
            recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly)->GetSchema(),
            LayoutOn(GetParam()));
        m_database = other.Location();
        m_options.rejects = m_folder.File("other rejects");
        EXPECT_EQ(Load(m_sources), 1) << Said();
        EXPECT_THAT(Said(), Not(HasSubstr("goes on behind")));
        EXPECT_EQ(disturbed, DumpWithout(other.Schema()));
        m_database = database;
        m_options.rejects = RejectsFolder();
    }

    std::string DumpWithout(const std::string& schema) {
        std::string dump = Dump();
        for (std::size_t at = 0; (at = dump.find(schema, at)) != std::string::npos;) {
            dump.erase(at, schema.size());
        }
        return dump;
    }

    std::string RejectsFolder() const { return m_folder.File("rejects"); }

    int RejectsSetAside() const {
        int count = 0;
        for (const auto& file : std::filesystem::directory_iterator(RejectsFolder())) {
            std::ostringstream content;
            content << std::ifstream(file.path()).rdbuf();
            const std::string text = content.str();
            for (std::size_t at = 0; (at = text.find("<record>", at)) != std::string::npos; ++at) {
                ++count;
            }
        }
        return count;
    }

    void TearDown() override { Continue(); }

    // Lets the backend go on that was stopped.
    void Continue() {
        if (m_stopped != 0) {
            kill(std::exchange(m_stopped, 0), SIGCONT);
        }
    }

    std::vector<std::string> m_sources;
    std::string m_workers = "1";
    pid_t m_stopped = 0;
};

TEST_P(KilledLoadOnServer, GoesOnWhereverItWas) {
    for (const int place : {1, 40, 120, 40}) {
        KillAt(place);
    }
    EXPECT_THAT(ExpectCompletion(), HasSubstr("goes on behind record"));
}

TEST_P(KilledLoadOnServer, WithWorkersGoesOnWhereverItWas) {
    m_workers = "4";
    for (const int place : {1, 30, 50, 30}) {
        KillAt(place);
    }
    m_options.workers = 4;
    ExpectCompletion();
}

// The server has taken the commit of the first group, but not looked at it, when the load is killed
// and started again.
TEST_P(KilledLoadOnServer, BackendThatLivesOnCommitsBeforeTheNextLoadOrNever) {
    pid_t backend = 0;
    int commits = 0;
    Kill(
        [&](const Message& message) {
            backend = BackendIn(message) != 0 ? BackendIn(message) : backend;
            commits += message.from == Side::Client && IsCommit(message) ? 1 : 0;
            if (commits == 2 && kill(backend, SIGSTOP) == 0) {
                m_stopped = backend;
            }
            return commits == 2;
        },
        Fate::Last);
    ASSERT_NE(m_stopped, 0);
    const std::string direct = m_database;
    {
        const ServerProxy proxy(SocketFolderOf(direct), m_folder.Path(),
                                [this](const Message& message) {
                                    if (message.text.starts_with("BEGIN")) {
                                        Continue();
                                    }
                                    return Fate::Pass;
                                });
        m_database = UrlWithSocketIn(direct, m_folder.Path());
        m_options.rejects = RejectsFolder();
        EXPECT_EQ(Load(m_sources), 1) << Said();
        EXPECT_THAT(Said(), HasSubstr("goes on behind record 100,"));
        m_database = direct;
    }
    EXPECT_EQ(m_stopped, 0);
    ExpectCompletion();
}

ON_A_SERVER_IN_EACH_LAYOUT(KilledLoadOnServer);

}  // namespace
}  // namespace tool
