// What is known of a server's timeline, and of one that does not say.
#include "recorddb/sql/postgres/server_timeline.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <string>

#include "engines.h"
#include "recorddb/errors.h"
#include "recorddb/sql/postgres/server_hosts.h"
#include "server_role.h"

namespace recorddb::sql {

namespace {

// A database of its own, in which the server's functions can be changed, and a role of its own.
class ServerTimelineTest : public testing::Test {
  protected:
    void SetUp() override {
        if (TestServer() == nullptr) {
            GTEST_SKIP() << "there is no PostgreSQL server";
        }
        m_role.Make();
        Server("CREATE DATABASE " + m_name + " TEMPLATE template0 OWNER " + m_name);
    }

    void TearDown() override {
        if (TestServer() != nullptr) {
            Server("DROP DATABASE IF EXISTS " + m_name);
            m_role.Drop();
        }
    }

    static void Server(const std::string& sql) { ServerRole::Server(sql); }

    std::string Url() const { return std::string(TestServer()) + "&dbname=" + m_name; }
    std::string UrlOfRole() const { return Url() + "&user=" + m_name; }

    static ServerTimeline Timeline(const std::string& url) {
        PostgresHandle handle = ServerHosts(url).Connect(true);
        return TimelineOf(handle);
    }

    // Lets what the server says of its cluster fail with an SQLSTATE. The server finds its own
    // functions in C by their number, so a new body would not be called. It is renamed, and another
    // function takes its name.
    void LetFail(const std::string& state) const {
        ServerHosts(Url()).Connect(true).Run(
            "ALTER FUNCTION pg_control_system() RENAME TO its_control_system;"
            "CREATE FUNCTION pg_catalog.pg_control_system("
            "OUT pg_control_version integer, OUT catalog_version_no integer, "
            "OUT system_identifier bigint, OUT pg_control_last_modified timestamptz) "
            "LANGUAGE plpgsql AS 'BEGIN RAISE EXCEPTION USING ERRCODE = ''" +
            state + "''; END'");
    }

    // The role makes a schema with a table, and fills it.
    void ExpectThatTheRoleCanWrite() const {
        const auto connection = Open(WithSchema(UrlOfRole(), "ours"), OpenMode::CreateNew);
        Transaction transaction(*connection);
        connection->ExecuteScript("CREATE TABLE thing (name TEXT); INSERT INTO thing VALUES ('a')");
        transaction.Commit();
        EXPECT_TRUE(connection->HasTable("thing"));
    }

    // Also of the database.
    const std::string m_name = "timeline_" + std::to_string(getpid());
    const ServerRole m_role{m_name};
};

TEST_F(ServerTimelineTest, IsThatOfTheCluster) {
    const ServerTimeline ours = Timeline(UrlOfRole());
    EXPECT_GT(ours.number, 0);
    EXPECT_NE(ours.cluster, "");
    EXPECT_EQ(Timeline(Url()).cluster, ours.cluster);
}

TEST_F(ServerTimelineTest, IsNotKnownWhereTheRoleMayNotAsk) {
    ServerHosts(Url()).Connect(true).Run(
        "REVOKE EXECUTE ON FUNCTION pg_control_system() FROM PUBLIC");
    EXPECT_EQ(Timeline(UrlOfRole()).number, 0);
    EXPECT_GT(Timeline(Url()).number, 0);
    ExpectThatTheRoleCanWrite();
}

TEST_F(ServerTimelineTest, IsNotKnownWhereTheServerHasNone) {
    LetFail("0A000");
    EXPECT_EQ(Timeline(UrlOfRole()).number, 0);
    ExpectThatTheRoleCanWrite();
}

TEST_F(ServerTimelineTest, IsNotKnownWhereTheServerLacksWhatIsAsked) {
    ServerHosts(Url()).Connect(true).Run(
        "ALTER FUNCTION pg_is_in_recovery() RENAME TO its_is_in_recovery");
    EXPECT_EQ(Timeline(UrlOfRole()).number, 0);
    ExpectThatTheRoleCanWrite();
}

TEST_F(ServerTimelineTest, IsNotKnownWhereTheServerRefusesAllTheSame) {
    LetFail("42501");
    EXPECT_EQ(Timeline(UrlOfRole()).number, 0);
    ExpectThatTheRoleCanWrite();
}

TEST_F(ServerTimelineTest, AnotherErrorIsNotTakenForARefusal) {
    LetFail("58030");
    try {
        Timeline(UrlOfRole());
        ADD_FAILURE() << "no error";
    } catch (const Error& error) {
        EXPECT_EQ(error.Kind(), ErrorKind::Io);
    }
}

}  // namespace

}  // namespace recorddb::sql
