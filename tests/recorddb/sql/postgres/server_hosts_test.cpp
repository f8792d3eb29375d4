// Which server is connected to, and with what, by what URL, service and environment say.
#include "recorddb/sql/postgres/server_hosts.h"

#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "engines.h"
#include "recorddb/errors.h"
#include "server_proxy.h"
#include "temporary_folder.h"

namespace recorddb::sql {

namespace {

// A variable of the environment, which is there as long as the object.
class Variable {
  public:
    Variable(const std::string& name, const std::string& value) : m_name(name) {
        if (const char* const before = std::getenv(name.c_str())) {
            m_before = before;
        }
        setenv(name.c_str(), value.c_str(), 1);
    }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;
    ~Variable() {
        m_before ? setenv(m_name.c_str(), m_before->c_str(), 1) : unsetenv(m_name.c_str());
    }

  private:
    std::string m_name;
    std::optional<std::string> m_before;
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
    static std::string Used(const std::string& url, const char* keyword, bool writes = true) {
        const PostgresHandle handle = ServerHosts(url).Connect(writes);
        return ConnectionOptions::Of(handle.Raw()).Value(keyword);
    }

    std::string UrlAt(const std::string& hosts) const {
        return "postgresql://tester@/postgres?host=" + hosts;
    }

    static constexpr const char* kServiceUrl = "postgresql:///?service=ours";

    TemporaryFolder m_folder;
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
