#include <array>

#include "recorddb/sql.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

class StatementTest : public OnEachEngine<SqlTest> {
  protected:
    static std::span<const std::byte> Bytes(std::string_view text) {
        return std::as_bytes(std::span(text));
    }

    Statement& InsertThing() {
        return m_connection->Prepare("INSERT INTO thing (name, size, data) VALUES ($1, $2, $3)");
    }
    Statement& SelectThing() { return m_connection->Prepare("SELECT name, size, data FROM thing"); }
};

TEST_P(StatementTest, ValuesComeBackAsTheyWereBound) {
    // A server cannot store a NUL.
    const std::string_view name =
        IsFile() ? std::string_view("Zo\xC3\xAB\0!", 6) : std::string_view("Zo\xC3\xAB!");
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

TEST_P(StatementTest, NullReadsAsNullZeroAndEmpty) {
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

TEST_P(StatementTest, EmptyTextAndBlobAreNotNull) {
    InsertThing().BindAll(std::string_view(), 1, std::span<const std::byte>());
    InsertThing().Execute();

    Statement& select = SelectThing();
    ASSERT_TRUE(select.Step());
    EXPECT_FALSE(select.IsNull(0));
    EXPECT_FALSE(select.IsNull(2));
    select.Reset();
}

TEST_P(StatementTest, ParametersGoByTheirNumberNotByTheirPlace) {
    Statement& select = m_connection->Prepare("SELECT $3 || $1 || $2 || $1");
    select.BindAll("a", "b", "c");
    ASSERT_TRUE(select.Step());
    EXPECT_EQ(select.Text(0), "caba");
    select.Reset();
}

TEST_P(StatementTest, ParametersAreNullAgainAfterAnExecution) {
    Statement& select = m_connection->Prepare("SELECT CAST($1 AS TEXT) IS NULL");
    select.BindAll("borrowed");
    EXPECT_EQ(QueryInt(select), 0);
    EXPECT_EQ(QueryInt(select), 1);
}

TEST_P(StatementTest, ExecutionStartsAnewAfterItsLastRow) {
    Insert("a");
    Statement& select = SelectThing();
    EXPECT_TRUE(select.Step());
    EXPECT_FALSE(select.Step());
    EXPECT_TRUE(select.Step());
    select.Reset();
}

TEST_P(StatementTest, StatementWorksAgainAfterAnError) {
    Insert("a");
    EXPECT_THROW(Insert("a"), Error);
    Insert("b");
    EXPECT_EQ(Count(), 2);
}

TEST_P(StatementTest, ExecuteCountsTheRowsItChanged) {
    Insert("a");
    Insert("b");
    EXPECT_EQ(m_connection->Prepare("UPDATE thing SET size = 1").Execute(), 2);
    EXPECT_EQ(m_connection->Prepare("DELETE FROM thing WHERE name = 'c'").Execute(), 0);
    EXPECT_EQ(m_connection->Prepare("SELECT 1").Execute(), 0);
}

TEST_P(StatementTest, ExecuteRunsAStatementThatReturnsRowsToItsEnd) {
    Statement& insert =
        m_connection->Prepare("INSERT INTO thing (name) VALUES ('a'), ('b') RETURNING name");
    EXPECT_EQ(insert.Execute(), 2);
    EXPECT_EQ(Count(), 2);
}

TEST_P(StatementTest, UnknownParameterIsRefused) {
    Statement& select = m_connection->Prepare("SELECT $1");
    for (const int parameter : {-1, 0, 2}) {
        EXPECT_THROW(select.Bind(parameter, 1), Error) << parameter;
    }
}

TEST_P(StatementTest, BindingInTheMiddleOfAnExecutionIsRefused) {
    Statement& select = m_connection->Prepare("SELECT $1");
    ASSERT_TRUE(select.Step());
    EXPECT_THROW(select.Bind(1, 1), Error);
    select.Reset();
    EXPECT_NO_THROW(select.Bind(1, 1));
    select.Reset();
}

TEST_P(StatementTest, OnlyNumberedParametersWithoutGapsArePrepared) {
    for (const char* const sql : {"SELECT ?", "SELECT :name", "SELECT $2", "SELECT $1, $3",
                                  "SELECT $0", "SELECT $x", "SELECT $1x", "SELECT $01, $1"}) {
        // What a server may take.
        const bool odd =
            std::string_view(sql) == "SELECT $1x" || std::string_view(sql) == "SELECT $01, $1";
        if (odd && !IsFile()) {
            continue;
        }
        EXPECT_THROW(m_connection->PrepareOwn(sql), Error) << sql;
    }
}

TEST_P(StatementTest, TextWithANulIsNotCut) {
    const std::string_view text("a\0b", 3);
    if (!IsFile()) {
        EXPECT_THROW(InsertThing().Bind(1, text), Error);
        return;
    }
    Insert(text);
    EXPECT_EQ(QueryInt(m_connection->Prepare("SELECT length(CAST(name AS BLOB)) FROM thing")), 3);
}

TEST_P(StatementTest, ScanReadsAnyNumberOfRowsWhileOthersRun) {
    constexpr int rows = 3000;
    Transaction transaction(*m_connection);
    for (int row = 0; row < rows; ++row) {
        Insert(std::to_string(1000 + row));
    }
    const auto scan =
        m_connection->PrepareScan("SELECT name FROM thing WHERE name >= $1 ORDER BY 1");
    scan->BindAll("1001");
    int expected = 1000;
    while (scan->Step()) {
        ASSERT_EQ(scan->Int(0), ++expected);
        ASSERT_EQ(Count(), rows);
    }
    EXPECT_EQ(expected, 1000 + rows - 1);
}

TEST_P(StatementTest, ScanThatStopsHalfWayHindersNobody) {
    for (int row = 0; row < 100; ++row) {
        Insert(std::to_string(row));
    }
    const auto scan = m_connection->PrepareScan("SELECT name FROM thing ORDER BY name");
    {
        Transaction transaction(*m_connection);
        ASSERT_TRUE(scan->Step());
        transaction.Commit();
    }
    const Transaction transaction(*m_connection);
    scan->Reset();
    ASSERT_TRUE(scan->Step());
    EXPECT_EQ(scan->Text(0), "0");
    scan->Reset();
    EXPECT_EQ(Count(), 100);
}

TEST_P(StatementTest, ScanOutsideOfATransactionReadsAllRows) {
    for (int row = 0; row < 100; ++row) {
        Insert(std::to_string(row));
    }
    const auto scan = m_connection->PrepareScan("SELECT name FROM thing");
    int rows = 0;
    while (scan->Step()) {
        ++rows;
    }
    EXPECT_EQ(rows, 100);
}

TEST_P(StatementTest, QueryIntIsNothingForNoRowAndForNull) {
    EXPECT_FALSE(QueryInt(m_connection->Prepare("SELECT 1 WHERE 1 = 0")).has_value());
    EXPECT_FALSE(QueryInt(m_connection->Prepare("SELECT max(size) FROM thing")).has_value());
    EXPECT_EQ(QueryInt(m_connection->Prepare("SELECT 42")), 42);
}

ON_EACH_LAYOUT(StatementTest);

}  // namespace

}  // namespace recorddb::sql
