// What a connection to a server finds there and asks of it.
#include <gmock/gmock.h>

#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "recorddb/sql/postgres/postgres_connector.h"
#include "sample_schema.h"
#include "server_role.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using ::testing::AllOf;
using ::testing::HasSubstr;

// A schema with a table, and a role that may connect and do nothing else.
class PostgresOpenTest : public SqlTest {
  protected:
    PostgresOpenTest() : SqlTest(Engine::Postgres) {}

    void SetUp() override {
        if (!IsFile()) {
            m_serverRole.Make();
        }
    }

    void TearDown() override {
        if (!IsFile()) {
            m_connection.reset();
            m_place.DropSchema();
            m_serverRole.Drop();
        }
    }

    static void Server(const std::string& sql) { ServerRole::Server(sql); }

    // The place as the role sees it.
    std::string PathOfRole() const { return Path() + "&user=" + m_role; }

    std::string RefusalOfRole(OpenMode mode) {
        return ErrorOfKind(ErrorKind::PermissionDenied, [this, mode] { Open(PathOfRole(), mode); });
    }

    template <typename Function>
    std::string ErrorOfKind(ErrorKind kind, Function function) {
        const Error error = ErrorOf(function);
        EXPECT_EQ(error.Kind(), kind) << error.what();
        return error.DriverText();
    }

    std::string Setting(const std::string& name) {
        Statement& show = m_connection->Prepare("SELECT current_setting('" + name + "')");
        const ResetGuard guard(show);
        show.Step();
        return std::string(show.Text(0));
    }

    const ServerRole m_serverRole{"role_of_" + m_place.Schema()};
    const std::string m_role = m_serverRole.Name();
};

TEST_F(PostgresOpenTest, WorksInItsSchemaAlone) {
    EXPECT_EQ(Setting("search_path"), m_place.Schema());
    EXPECT_EQ(Setting("client_encoding"), "UTF8");
    EXPECT_TRUE(m_connection->HasTable("thing"));
    EXPECT_FALSE(m_connection->HasTable("pg_class"));
}

TEST_F(PostgresOpenTest, WaitsForOtherWritersAsLongAsThePersonSays) {
    EXPECT_EQ(Setting("lock_timeout"), "10s");
    m_connection = Open(Path() + "&options=-clock_timeout%3D3s", OpenMode::ReadWrite);
    EXPECT_EQ(Setting("lock_timeout"), "3s");
}

TEST_F(PostgresOpenTest, SchemaMayBeThatOfTheSearchPath) {
    const std::string path =
        std::string(TestServer()) + "&options=-csearch_path%3D\"" + m_place.Schema() + "\"";
    m_connection = Open(path, OpenMode::ReadOnly);
    EXPECT_EQ(Count(), 0);
    EXPECT_THAT(ErrorOfKind(ErrorKind::CannotOpen,
                            [] {
                                Open(std::string(TestServer()) + "&options=-csearch_path%3Dnone",
                                     OpenMode::CreateNew);
                            }),
                HasSubstr("--schema"));
}

TEST_F(PostgresOpenTest, SchemaThatIsNotThereIsMadeByTheFirstTransactionOnly) {
    m_connection.reset();
    m_place.DropSchema();
    EXPECT_THAT(ErrorOfKind(ErrorKind::CannotOpen, [this] { Open(Path(), OpenMode::ReadWrite); }),
                HasSubstr("there is no schema"));
    m_connection = Open(Path(), OpenMode::CreateNew);
    {
        const Transaction transaction(*m_connection);
        m_connection->ExecuteScript("CREATE TABLE thing (name TEXT)");
    }
    EXPECT_THROW(Open(Path(), OpenMode::ReadWrite), Error);
    Transaction transaction(*m_connection);
    m_connection->ExecuteScript("CREATE TABLE thing (name TEXT)");
    transaction.Commit();
    EXPECT_TRUE(Open(Path(), OpenMode::ReadWrite)->HasTable("thing"));
}

TEST_F(PostgresOpenTest, NameOfASchemaThatTheServerWouldCutIsRefused) {
    const std::string path = WithSchema(TestServer(), std::string(64, 'x'));
    EXPECT_THAT(ErrorOfKind(ErrorKind::CannotOpen, [&] { Open(path, OpenMode::CreateNew); }),
                HasSubstr("64 bytes"));
}

TEST_F(PostgresOpenTest, RightThatARoleLacksIsNamed) {
    const std::string schema = "\"" + m_place.Schema() + "\"";
    EXPECT_THAT(RefusalOfRole(OpenMode::ReadOnly),
                AllOf(HasSubstr(m_role), HasSubstr("USAGE"), HasSubstr("GRANT USAGE ON SCHEMA")));
    Server("GRANT USAGE ON SCHEMA " + schema + " TO " + m_role);
    EXPECT_THAT(RefusalOfRole(OpenMode::CreateNew), HasSubstr("GRANT CREATE ON SCHEMA " + schema));
    m_connection = Open(PathOfRole(), OpenMode::ReadOnly);
    const auto hasTable = [this] { m_connection->HasTable("thing"); };
    EXPECT_THAT(ErrorOfKind(ErrorKind::PermissionDenied, hasTable), HasSubstr("the right SELECT"));
    Server("GRANT SELECT, INSERT ON " + schema + ".thing TO " + m_role);
    EXPECT_TRUE(m_connection->HasTable("thing"));
    m_connection = Open(PathOfRole(), OpenMode::ReadWrite);
    EXPECT_THAT(ErrorOfKind(ErrorKind::PermissionDenied, hasTable),
                HasSubstr("the right UPDATE, DELETE"));
    Server("GRANT UPDATE, DELETE ON " + schema + ".thing TO " + m_role);
    EXPECT_TRUE(m_connection->HasTable("thing"));
}

TEST_F(PostgresOpenTest, RightToMakeAnIndexIsNamed) {
    m_connection.reset();
    m_place.DropSchema();
    Database::Create(Path(), schema::ReadSchema(kSampleSchema, "sample.yaml"));
    const std::string schema = "\"" + m_place.Schema() + "\"";
    Server("GRANT USAGE ON SCHEMA " + schema + " TO " + m_role +
           "; GRANT ALL ON ALL TABLES IN SCHEMA " + schema + " TO " + m_role);
    const auto database = Database::Open(PathOfRole(), Database::Mode::ReadWrite);
    const schema::RecordType& bug = *database->GetSchema().FindType("bug");
    const auto search = [&] { database->EnsureSearchIndex(bug, *bug.FindField("title")); };
    EXPECT_THAT(ErrorOfKind(ErrorKind::PermissionDenied, search),
                AllOf(HasSubstr("\"bug\" by \"title\""), HasSubstr(m_role),
                      HasSubstr("let \"tester\" load first"),
                      HasSubstr("ON " + schema + ".\"bug\" (\"title\")")));
    Server("ALTER TABLE " + schema + ".bug OWNER TO " + m_role);
    EXPECT_THAT(ErrorOfKind(ErrorKind::PermissionDenied, search),
                HasSubstr("GRANT CREATE ON SCHEMA " + schema));
    Server("GRANT CREATE ON SCHEMA " + schema + " TO " + m_role);
    EXPECT_NO_THROW(search());
    EXPECT_TRUE(database->HasSearchIndex(bug, *bug.FindField("title")));
}

TEST_F(PostgresOpenTest, RoleWithoutSuperuserMakesASchemaWhereItMayMakeSchemas) {
    m_connection.reset();
    m_place.DropSchema();
    EXPECT_THAT(RefusalOfRole(OpenMode::CreateNew), HasSubstr("GRANT CREATE ON DATABASE"));
    Server("GRANT CREATE ON DATABASE postgres TO " + m_role);
    Database::Create(PathOfRole(), schema::ReadSchema(kSampleSchema, "sample.yaml"));
    EXPECT_NO_THROW(Database::Open(PathOfRole(), Database::Mode::ReadWrite));
}

TEST_F(PostgresOpenTest, TableThatDoesMoreThanHoldRowsIsNone) {
    const std::string function =
        "CREATE FUNCTION f() RETURNS trigger LANGUAGE plpgsql AS 'BEGIN RETURN NULL; END'; ";
    for (const std::string& script :
         {function + "CREATE TRIGGER t AFTER INSERT ON thing EXECUTE FUNCTION f()",
          std::string("CREATE RULE r AS ON INSERT TO thing DO ALSO NOTHING"),
          std::string("ALTER TABLE thing ENABLE ROW LEVEL SECURITY"),
          std::string("ALTER TABLE thing ADD twice BIGINT GENERATED ALWAYS AS (size * 2) STORED"),
          std::string("CREATE TABLE part () INHERITS (thing)"),
          std::string("ALTER TABLE thing RENAME TO it; CREATE VIEW thing AS SELECT * FROM it")}) {
        const Transaction transaction(*m_connection);
        EXPECT_TRUE(m_connection->HasTable("thing"));
        m_connection->ExecuteScript(script);
        EXPECT_FALSE(m_connection->HasTable("thing")) << script;
    }
}

TEST_F(PostgresOpenTest, DatabaseOfAnotherEncodingIsRefused) {
    const std::string database = "latin_" + m_place.Schema();
    Server("CREATE DATABASE " + database +
           " TEMPLATE template0 ENCODING 'LATIN1' LOCALE_PROVIDER libc LOCALE 'C'");
    EXPECT_THAT(ErrorOfKind(ErrorKind::CannotOpen,
                            [&] { Open(Path() + "&dbname=" + database, OpenMode::ReadWrite); }),
                AllOf(HasSubstr("LATIN1"), HasSubstr("UTF8")));
    Server("DROP DATABASE " + database);
}

TEST_F(PostgresOpenTest, ServerThatIsTooOldIsRefused) {
    EXPECT_THAT(ErrorOfKind(ErrorKind::CannotOpen, [] { CheckServer(120022, "12.22", "UTF8"); }),
                AllOf(HasSubstr("12.22"), HasSubstr("13 or later")));
    EXPECT_NO_THROW(CheckServer(130000, "13.0", "UTF8"));
}

TEST_F(PostgresOpenTest, ImmutableIsForFiles) {
    EXPECT_THAT(ErrorOfKind(ErrorKind::Unsupported, [this] { Open(Path(), OpenMode::Immutable); }),
                HasSubstr("--immutable"));
}

TEST_F(PostgresOpenTest, WhatLibpqCannotReadIsToldWithoutIt) {
    for (const char* const url : {"postgresql://ann:secret%zz@/db", "postgresql://[secret/db",
                                  "postgresql:///db?secret=1", "postgresql:///db?secret"}) {
        const std::string text =
            ErrorOfKind(ErrorKind::CannotOpen, [url] { Open(url, OpenMode::ReadOnly); });
        EXPECT_THAT(text.substr(text.find(": ")), Not(HasSubstr("secret"))) << text;
    }
}

TEST_F(PostgresOpenTest, CommitOfAFailedTransactionIsNoCommit) {
    {
        Transaction transaction(*m_connection);
        Insert("a");
        EXPECT_THROW(Insert("a"), Error);
        EXPECT_THROW(transaction.Commit(), Error);
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(PostgresOpenTest, ServerThatGoesAwayIsTold) {
    Statement& own = m_connection->Prepare("SELECT pg_backend_pid()");
    const std::int64_t backend = QueryInt(own).value();
    Server("SELECT pg_terminate_backend(" + std::to_string(backend) + ", 10000)");
    EXPECT_EQ(ErrorOf([this] { Count(); }).Kind(), ErrorKind::ConnectionLost);
    EXPECT_NO_THROW(m_connection.reset());
}

}  // namespace

}  // namespace recorddb::sql
