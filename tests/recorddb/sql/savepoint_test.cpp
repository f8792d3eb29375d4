#include "recorddb/sql/savepoint.h"

#include <stdexcept>

#include "recorddb/sql/transaction.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using SavepointTest = SqlTest;

TEST_F(SavepointTest, DestructorUndoesOnlyItsOwnWork) {
    Transaction transaction(*m_connection);
    Insert("before");
    {
        const Savepoint savepoint(*m_connection);
        Insert("inside");
    }
    Insert("after");
    transaction.Commit();
    EXPECT_EQ(Count(), 2);
}

TEST_F(SavepointTest, ReleaseKeepsTheWork) {
    Transaction transaction(*m_connection);
    {
        Savepoint savepoint(*m_connection);
        Insert("inside");
        savepoint.Release();
    }
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(SavepointTest, ReleasedWorkGoesWithTheTransaction) {
    {
        const Transaction transaction(*m_connection);
        Savepoint savepoint(*m_connection);
        Insert("inside");
        savepoint.Release();
    }
    EXPECT_EQ(Count(), 0);
}

TEST_F(SavepointTest, InnerOneIsUndoneAlone) {
    Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    Insert("outer");
    {
        const Savepoint inner(*m_connection);
        Insert("inner");
    }
    outer.Release();
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(SavepointTest, OuterOneTakesTheInnerOneWithIt) {
    Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    Insert("outer");
    Savepoint inner(*m_connection);
    Insert("inner");
    outer.Rollback();
    EXPECT_EQ(Count(), 0);
    inner.Rollback();
    Insert("after");
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_F(SavepointTest, OnlyTheInnermostCanBeReleased) {
    const Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    const Savepoint inner(*m_connection);
    EXPECT_THROW(outer.Release(), std::logic_error);
}

TEST_F(SavepointTest, EndedOneCannotBeReleased) {
    const Transaction transaction(*m_connection);
    Savepoint savepoint(*m_connection);
    savepoint.Release();
    EXPECT_THROW(savepoint.Release(), std::logic_error);
}

TEST_F(SavepointTest, NeedsATransaction) {
    EXPECT_THROW(Savepoint{*m_connection}, std::logic_error);
}

TEST_F(SavepointTest, OneThatOutlivesItsTransactionDoesNothing) {
    Transaction first(*m_connection);
    Savepoint savepoint(*m_connection);
    first.Rollback();
    Transaction second(*m_connection);
    Insert("a");
    savepoint.Rollback();
    second.Commit();
    EXPECT_EQ(Count(), 1);
}

}  // namespace

}  // namespace recorddb::sql
