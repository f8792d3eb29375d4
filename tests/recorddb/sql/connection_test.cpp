#include <gmock/gmock.h>

#include "recorddb/sql.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

using ConnectionTest = OnEachEngine<SqlTest>;

TEST_P(ConnectionTest, SameTextIsPreparedOnce) {
    Statement& first = m_connection->Prepare("SELECT 1");
    Statement& second = m_connection->Prepare(std::string("SELECT 1"));
    EXPECT_EQ(&first, &second);
}

TEST_P(ConnectionTest, PreparedStatementsStayWhereTheyAreWhenMoreCome) {
    Statement& first = m_connection->Prepare("SELECT 0");
    for (int number = 1; number < 200; ++number) {
        m_connection->Prepare("SELECT " + std::to_string(number));
    }
    EXPECT_EQ(&first, &m_connection->Prepare("SELECT 0"));
    EXPECT_EQ(QueryInt(first), 0);
}

TEST_P(ConnectionTest, OwnStatementsNest) {
    Insert("a");
    Insert("b");
    const auto outer = m_connection->PrepareOwn("SELECT name FROM thing ORDER BY name");
    const auto inner = m_connection->PrepareOwn("SELECT name FROM thing ORDER BY name");
    int rows = 0;
    while (outer->Step()) {
        while (inner->Step()) {
            ++rows;
        }
    }
    EXPECT_EQ(rows, 4);
}

TEST_P(ConnectionTest, KnowsItsTablesAndIndexes) {
    m_connection->ExecuteScript("CREATE INDEX size_index ON thing (size)");
    EXPECT_TRUE(m_connection->HasTable("thing"));
    EXPECT_FALSE(m_connection->HasTable("size_index"));
    EXPECT_TRUE(m_connection->HasIndex("size_index"));
    EXPECT_FALSE(m_connection->HasIndex("thing"));
}

TEST_P(ConnectionTest, StatementsSurviveAChangeOfTheTables) {
    Insert("a");
    EXPECT_EQ(Count(), 1);
    m_connection->ExecuteScript("ALTER TABLE thing ADD COLUMN colour TEXT");
    Insert("b");
    EXPECT_EQ(Count(), 2);
}

TEST_P(ConnectionTest, EmptyScriptDoesNothing) {
    m_connection->ExecuteScript("");
    m_connection->ExecuteScript(" ; ");
    EXPECT_EQ(Count(), 0);
}

TEST_P(ConnectionTest, WrongSqlIsAnErrorWithTheStatementInIt) {
    const Error error = ErrorOf([this] { m_connection->Prepare("SELECT nonsense FROM thing"); });
    EXPECT_EQ(error.Kind(), ErrorKind::Other);
    EXPECT_EQ(error.Sql(), "SELECT nonsense FROM thing");
    EXPECT_THAT(error.DriverText(), HasSubstr("nonsense"));
    EXPECT_THAT(error.what(), HasSubstr("SELECT nonsense FROM thing"));
    EXPECT_THROW(m_connection->ExecuteScript("CREATE TABLE"), Error);
    EXPECT_THROW(m_connection->Prepare(""), Error);
}

TEST_P(ConnectionTest, UniqueViolationNamesItsColumns) {
    m_connection->ExecuteScript("CREATE TABLE pair (a TEXT, b TEXT, UNIQUE (a, b))");
    Statement& insert = m_connection->Prepare("INSERT INTO pair (a, b) VALUES ('x', 'y')");
    insert.Execute();
    const Error error = ErrorOf([&insert] { insert.Execute(); });
    EXPECT_EQ(error.Kind(), ErrorKind::UniqueViolation);
    EXPECT_THAT(error.Columns(), ElementsAre("a", "b"));
    EXPECT_TRUE(error.IsConstraint());
}

TEST_P(ConnectionTest, PrimaryKeyViolationIsAUniqueViolation) {
    m_connection->ExecuteScript("CREATE TABLE keyed (dbid INTEGER PRIMARY KEY)");
    Statement& insert = m_connection->Prepare("INSERT INTO keyed (dbid) VALUES (1)");
    insert.Execute();
    const Error error = ErrorOf([&insert] { insert.Execute(); });
    EXPECT_EQ(error.Kind(), ErrorKind::UniqueViolation);
    EXPECT_THAT(error.Columns(), ElementsAre("dbid"));
}

TEST_P(ConnectionTest, MissingValueIsAConstraintViolation) {
    const Error error = ErrorOf(
        [this] { m_connection->Prepare("INSERT INTO thing (name) VALUES ($1)").Execute(); });
    EXPECT_EQ(error.Kind(), ErrorKind::ConstraintViolation);
    EXPECT_THAT(error.Columns(), ElementsAre("name"));
}

TEST_P(ConnectionTest, ForeignKeysAreEnforced) {
    m_connection->ExecuteScript(
        "CREATE TABLE parent (dbid INTEGER PRIMARY KEY);"
        "CREATE TABLE child (thing BIGINT REFERENCES parent (dbid))");
    const Error error = ErrorOf(
        [this] { m_connection->Prepare("INSERT INTO child (thing) VALUES (1)").Execute(); });
    EXPECT_EQ(error.Kind(), ErrorKind::ForeignKeyViolation);
}

ON_EACH_LAYOUT(ConnectionTest);

}  // namespace

}  // namespace recorddb::sql
