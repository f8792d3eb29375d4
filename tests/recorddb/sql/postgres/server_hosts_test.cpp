// Which server is connected to, and with what, by what URL, service and environment say.
#include "recorddb/sql/postgres/server_hosts.h"

#include <gtest/gtest.h>
#include <libpq-fe.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engines.h"
#include "recorddb/errors.h"
#include "server_proxy.h"
#include "temporary_folder.h"

namespace recorddb::sql {

namespace {

// As long as the object is there, a variable of the environment has this value, or none.
class Variable {
  public:
    Variable(const std::string& name, const std::optional<std::string>& value) : m_name(name) {
        if (const char* const before = std::getenv(name.c_str())) {
            m_before = before;
        }
        Set(value);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() { Set(m_before); }

  private:
    void Set(const std::optional<std::string>& value) const {
        value ? setenv(m_name.c_str(), value->c_str(), 1) : unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::optional<std::string> m_before;
};

// An environment that says nothing to libpq, whatever the person who runs the tests has set.
class NoVariables {
  public:
    NoVariables() {
        std::vector<std::string> names;
        for (char** entry = environ; *entry != nullptr; ++entry) {
            const std::string_view text = *entry;
            if (text.starts_with("PG")) {
                names.emplace_back(text.substr(0, text.find('=')));
            }
        }
        for (const std::string& name : names) {
            m_unset.emplace_back(name, std::nullopt);
        }
    }

  private:
    std::list<Variable> m_unset;
};

// A server that takes connections and never says a word.
class SilentServer {
  public:
    explicit SilentServer(const std::string& folder) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const std::string path = folder + "/.s.PGSQL.5432";
        path.copy(address.sun_path, sizeof(address.sun_path) - 1);
        m_socket = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        EXPECT_EQ(bind(m_socket, reinterpret_cast<sockaddr*>(&address), sizeof(address)), 0);
        EXPECT_EQ(listen(m_socket, 8), 0);
    }
    SilentServer(const SilentServer&) = delete;
    SilentServer& operator=(const SilentServer&) = delete;
    ~SilentServer() { close(m_socket); }

  private:
    int m_socket;
};

// Services are those of the file "services" in the temporary folder.
class ServerHostsTest : public testing::Test {
  protected:
    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
        m_socket = SocketFolderOf(TestServer());
        // The first of the two does not answer.
        m_hosts = m_folder.File("nowhere") + "," + m_socket;
    }

    // A service at these hosts that says more besides.
    void WriteService(const std::string& hosts, const std::string& more) const {
        m_folder.Write("services",
                       "[ours]\nuser=tester\ndbname=postgres\nhost=" + hosts + "\n" + more);
    }

    // The values that a connection is made with.
    static std::string Used(const std::string& url, const char* keyword, bool writes = true,
                            std::optional<std::chrono::milliseconds> patience = {}) {
        const PostgresHandle handle = ServerHosts(url).Connect(writes, patience);
        return ConnectionOptions::Of(handle.Raw()).Value(keyword);
    }

    std::string UrlAt(const std::string& hosts) const {
        return "postgresql://tester@/postgres?host=" + hosts;
    }

    static constexpr const char* kServiceUrl = "postgresql:///?service=ours";

    TemporaryFolder m_folder;
    NoVariables m_noVariables;
    Variable m_serviceFile{"PGSERVICEFILE", m_folder.File("services")};
    std::string m_socket;
    std::string m_hosts;
};

TEST_F(ServerHostsTest, AnswersAreNotWaitedForEndlesslyUnlessThePersonSaysSo) {
    const std::string url = UrlAt(m_socket);
    EXPECT_EQ(Used(url, "connect_timeout"), "30");
    EXPECT_EQ(Used(url, "tcp_user_timeout"), "60000");
    EXPECT_EQ(Used(url + "&connect_timeout=7", "connect_timeout"), "7");
    const Variable variable("PGCONNECT_TIMEOUT", "8");
    EXPECT_EQ(Used(url, "connect_timeout"), "8");
}

TEST_F(ServerHostsTest, PatienceIsSharedAmongTheServersAndCutsWhatIsSaid) {
    using std::chrono::milliseconds;
    const auto limit = [](const std::string& url, milliseconds patience) {
        return Used(url, "connect_timeout", true, patience);
    };
    const std::string url = UrlAt(m_socket);
    EXPECT_EQ(limit(url, milliseconds(5000)), "5");
    EXPECT_EQ(limit(url, milliseconds(4001)), "5");
    EXPECT_EQ(limit(url, milliseconds(60000)), "30");
    EXPECT_EQ(limit(url, milliseconds(-1)), "2");
    EXPECT_EQ(limit(url + "&connect_timeout=3", milliseconds(5000)), "3");
    EXPECT_EQ(limit(url + "&connect_timeout=7", milliseconds(5000)), "5");
    EXPECT_EQ(limit(url + "&connect_timeout=0", milliseconds(5000)), "5");
    EXPECT_EQ(limit(UrlAt(m_hosts), milliseconds(5000)), "3");
}

TEST_F(ServerHostsTest, ServerThatNeverAnswersIsGivenUpWhenThePatienceEnds) {
    const SilentServer silent(m_folder.Path().string());
    try {
        ServerHosts(UrlAt(m_folder.Path().string()) + "&connect_timeout=0")
            .Connect(true, std::chrono::milliseconds(1));
        ADD_FAILURE() << "connected";
    } catch (const Error& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_NE(error.DriverText().find("timeout"), std::string::npos) << error.DriverText();
    }
}

TEST_F(ServerHostsTest, ServiceComesBeforeTheEnvironmentAndWhatIsSetOtherwise) {
    WriteService(m_socket, "connect_timeout=7\nkeepalives_idle=9\napplication_name=x\n");
    const Variable variable("PGCONNECT_TIMEOUT", "8");
    const auto holdsFor = [](const std::string& url) {
        EXPECT_EQ(Used(url, "connect_timeout"), "7") << url;
        EXPECT_EQ(Used(url, "keepalives_idle"), "9") << url;
        EXPECT_EQ(Used(url, "application_name"), "x") << url;
        EXPECT_EQ(Used(url, "keepalives_interval"), "10") << url;
        EXPECT_EQ(Used(url + "&connect_timeout=5", "connect_timeout"), "5") << url;
    };
    holdsFor(kServiceUrl);
    const Variable service("PGSERVICE", "ours");
    holdsFor("postgresql:///postgres?user=tester");
}

TEST_F(ServerHostsTest, OfSeveralServersWhoeverWritesTakesOneThatTakesChanges) {
    const auto holdsFor = [](const std::string& url) {
        EXPECT_EQ(Used(url, "target_session_attrs"), "read-write") << url;
        EXPECT_EQ(Used(url, "target_session_attrs", false), "any") << url;
    };
    WriteService(m_hosts, "");
    holdsFor(UrlAt(m_hosts));
    holdsFor(kServiceUrl);
    {
        const Variable service("PGSERVICE", "ours");
        holdsFor("postgresql:///?user=tester");
    }
    const Variable host("PGHOST", m_hosts);
    holdsFor("postgresql://tester@/postgres");
    EXPECT_EQ(Used(UrlAt(m_socket), "target_session_attrs"), "any");
}

TEST_F(ServerHostsTest, WhichOfTheServersIsLeftToWhoeverSaysIt) {
    WriteService(m_hosts, "target_session_attrs=primary\n");
    EXPECT_EQ(Used(kServiceUrl, "target_session_attrs"), "primary");
    const std::string any = "&target_session_attrs=any";
    EXPECT_EQ(Used(kServiceUrl + any, "target_session_attrs"), "any");
    EXPECT_EQ(Used(UrlAt(m_hosts) + any, "target_session_attrs"), "any");
    const Variable variable("PGTARGETSESSIONATTRS", "any");
    EXPECT_EQ(Used(UrlAt(m_hosts), "target_session_attrs"), "any");
}

TEST_F(ServerHostsTest, ServerOfAServiceIsLeftOut) {
    WriteService(m_hosts, "");
    ServerHosts servers(kServiceUrl);
    EXPECT_TRUE(servers.LeaveOut(servers.Connect(true)));
    EXPECT_THROW(servers.Connect(true), Error);
}

TEST_F(ServerHostsTest, ServiceThatIsNotThereIsTold) {
    WriteService(m_socket, "");
    try {
        ServerHosts("postgresql:///?service=theirs").Connect(true);
        ADD_FAILURE() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::CannotOpen);
        EXPECT_EQ(error.DriverText(), "definition of service \"theirs\" not found");
    }
}

TEST_F(ServerHostsTest, PasswordIsThatOfThePasswordFile) {
    const std::string file = m_folder.Write("passwords", "*:*:postgres:tester:secret\n");
    std::filesystem::permissions(file, std::filesystem::perms::owner_read);
    const PostgresHandle handle = ServerHosts(UrlAt(m_socket) + "&passfile=" + file).Connect(true);
    EXPECT_STREQ(PQpass(handle.Raw()), "secret");
}

TEST_F(ServerHostsTest, SettingsOfTheEnvironmentReachTheServer) {
    const Variable variable("PGOPTIONS", "-clock_timeout=3s");
    PostgresHandle handle = ServerHosts(UrlAt(m_socket)).Connect(true);
    EXPECT_EQ(handle.Run("SHOW lock_timeout").Text(0, 0), "3s");
}

}  // namespace

}  // namespace recorddb::sql
