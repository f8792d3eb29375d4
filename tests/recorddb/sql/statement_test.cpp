#include <array>

#include "recorddb/sql.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

class StatementTest : public SqlTest {
  protected:
    static std::span<const std::byte> Bytes(std::string_view text) {
        return std::as_bytes(std::span(text));
    }

    Statement& InsertThing() {
        return m_connection->Prepare("INSERT INTO thing (name, size, data) VALUES ($1, $2, $3)");
    }
    Statement& SelectThing() { return m_connection->Prepare("SELECT name, size, data FROM thing"); }
};

TEST_F(StatementTest, ValuesComeBackAsTheyWereBound) {
    const std::string_view name("Zo\xC3\xAB\0!", 6);
    InsertThing().BindAll(name, 1LL << 60, Bytes(std::string_view("\0\xFF", 2)));
    EXPECT_EQ(InsertThing().Execute(), 1);

    Statement& select = SelectThing();
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(select.ColumnCount(), 3);
    EXPECT_EQ(select.Text(0), name);
    EXPECT_EQ(select.Int(1), 1LL << 60);
    ASSERT_EQ(select.Blob(2).size(), 2U);
    EXPECT_EQ(select.Blob(2)[1], std::byte{0xFF});
    EXPECT_FALSE(select.Step());
}

TEST_F(StatementTest, NullReadsAsNullZeroAndEmpty) {
    InsertThing().BindAll("a", nullptr, std::optional<std::int64_t>());
    InsertThing().Execute();

    Statement& select = SelectThing();
    ASSERT_TRUE(select.Step());
    EXPECT_TRUE(select.IsNull(1));
    EXPECT_EQ(select.Int(1), 0);
    EXPECT_EQ(select.Text(1), "");
    EXPECT_TRUE(select.Blob(2).empty());
    select.Reset();
}

TEST_F(StatementTest, EmptyTextAndBlobAreNotNull) {
    InsertThing().BindAll(std::string_view(), 1, std::span<const std::byte>());
    InsertThing().Execute();

    Statement& select = SelectThing();
    ASSERT_TRUE(select.Step());
    EXPECT_FALSE(select.IsNull(0));
    EXPECT_FALSE(select.IsNull(2));
    select.Reset();
}

TEST_F(StatementTest, ParametersGoByTheirNumberNotByTheirPlace) {
    Statement& select = m_connection->Prepare("SELECT $3 || $1 || $2 || $1");
    select.BindAll("a", "b", "c");
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(select.Text(0), "caba");
    select.Reset();
}

TEST_F(StatementTest, ParametersAreNullAgainAfterAnExecution) {
    Statement& select = m_connection->Prepare("SELECT $1 IS NULL");
    select.BindAll("borrowed");
    EXPECT_EQ(QueryInt(select), 0);
    EXPECT_EQ(QueryInt(select), 1);
}

TEST_F(StatementTest, ExecutionStartsAnewAfterItsLastRow) {
    Insert("a");
    Statement& select = SelectThing();
    EXPECT_TRUE(select.Step());
    EXPECT_FALSE(select.Step());
    EXPECT_TRUE(select.Step());
    select.Reset();
}

TEST_F(StatementTest, StatementWorksAgainAfterAnError) {
    Insert("a");
    EXPECT_THROW(Insert("a"), Error);
    Insert("b");
    EXPECT_EQ(Count(), 2);
}

TEST_F(StatementTest, ExecuteCountsTheRowsItChanged) {
    Insert("a");
    Insert("b");
    EXPECT_EQ(m_connection->Prepare("UPDATE thing SET size = 1").Execute(), 2);
    EXPECT_EQ(m_connection->Prepare("DELETE FROM thing WHERE name = 'c'").Execute(), 0);
    EXPECT_EQ(m_connection->Prepare("SELECT 1").Execute(), 0);
}

TEST_F(StatementTest, ExecuteRunsAStatementThatReturnsRowsToItsEnd) {
    Statement& insert =
        m_connection->Prepare("INSERT INTO thing (name) VALUES ('a'), ('b') RETURNING name");
    EXPECT_EQ(insert.Execute(), 2);
    EXPECT_EQ(Count(), 2);
}

TEST_F(StatementTest, UnknownParameterIsRefused) {
    Statement& select = m_connection->Prepare("SELECT $1");
    for (const int parameter : {-1, 0, 2}) {
        EXPECT_THROW(select.Bind(parameter, 1), Error) << parameter;
    }
}

TEST_F(StatementTest, BindingInTheMiddleOfAnExecutionIsRefused) {
    Statement& select = m_connection->Prepare("SELECT $1");
    ASSERT_TRUE(select.Step());
    EXPECT_THROW(select.Bind(1, 1), Error);
    select.Reset();
    EXPECT_NO_THROW(select.Bind(1, 1));
    select.Reset();
}

TEST_F(StatementTest, OnlyNumberedParametersWithoutGapsArePrepared) {
    for (const char* const sql : {"SELECT ?", "SELECT :name", "SELECT $2", "SELECT $1, $3",
                                  "SELECT $0", "SELECT $x", "SELECT $1x", "SELECT $01, $1"}) {
        EXPECT_THROW(m_connection->PrepareOwn(sql), Error) << sql;
    }
}

TEST_F(StatementTest, QueryIntIsNothingForNoRowAndForNull) {
    EXPECT_FALSE(QueryInt(m_connection->Prepare("SELECT 1 WHERE 1 = 0")).has_value());
    EXPECT_FALSE(QueryInt(m_connection->Prepare("SELECT max(size) FROM thing")).has_value());
    EXPECT_EQ(QueryInt(m_connection->Prepare("SELECT 42")), 42);
}

}  // namespace

}  // namespace recorddb::sql
