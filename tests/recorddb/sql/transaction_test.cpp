#include <stdexcept>
#include <utility>

#include "recorddb/sql.h"
#include "recorddb/sql/savepoint.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using TransactionTest = OnEachEngine<SqlTest>;

TEST_P(TransactionTest, CommitKeepsTheWork) {
    {
        Transaction transaction(*m_connection);
        Insert("a");
        transaction.Commit();
        EXPECT_FALSE(transaction.IsOpen());
    }
    EXPECT_EQ(Count(), 1);
    EXPECT_FALSE(m_connection->InTransaction());
}

TEST_P(TransactionTest, DestructorUndoesTheWork) {
    {
        const Transaction transaction(*m_connection);
        Insert("a");
        EXPECT_EQ(Count(), 1);
    }
    EXPECT_EQ(Count(), 0);
    EXPECT_FALSE(m_connection->InTransaction());
}

TEST_P(TransactionTest, RollbackEndsTheTransaction) {
    Transaction first(*m_connection);
    Insert("a");
    first.Rollback();
    EXPECT_EQ(Count(), 0);

    Transaction second(*m_connection);
    Insert("b");
    first.Rollback();
    second.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(TransactionTest, EndedTransactionRefusesToCommit) {
    Transaction transaction(*m_connection);
    transaction.Commit();
    EXPECT_THROW(transaction.Commit(), std::logic_error);
}

TEST_P(TransactionTest, OnlyOneAtATime) {
    const Transaction transaction(*m_connection);
    EXPECT_THROW(Transaction{*m_connection}, std::logic_error);
    EXPECT_TRUE(m_connection->InTransaction());
}

TEST_P(TransactionTest, MovedTransactionEndsOnce) {
    Transaction first(*m_connection);
    Insert("a");
    Transaction second(std::move(first));
    first.Rollback();
    second.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(TransactionTest, CommitWithAnOpenSavepointIsRefused) {
    Transaction transaction(*m_connection);
    Savepoint savepoint(*m_connection);
    EXPECT_THROW(transaction.Commit(), std::logic_error);
    savepoint.Release();
    EXPECT_NO_THROW(transaction.Commit());
}

TEST_P(TransactionTest, FailedCommitIsRolledBack) {
    m_connection->ExecuteScript(
        "CREATE TABLE child (parent BIGINT REFERENCES child (dbid) DEFERRABLE INITIALLY DEFERRED, "
        "dbid INTEGER PRIMARY KEY)");
    {
        Transaction transaction(*m_connection);
        m_connection->Prepare("INSERT INTO child (parent, dbid) VALUES (7, 1)").Execute();
        EXPECT_THROW(transaction.Commit(), Error);
        EXPECT_TRUE(transaction.IsOpen());
    }
    EXPECT_EQ(QueryInt(m_connection->Prepare("SELECT count(*) FROM child")), 0);
    EXPECT_NO_THROW(Transaction{*m_connection});
}

TEST_P(TransactionTest, TransactionThatTheEngineEndedItselfCanBeLeft) {
    {
        const Transaction transaction(*m_connection);
        Insert("a");
        m_connection->ExecuteScript("ROLLBACK");
    }
    EXPECT_EQ(Count(), 0);
    EXPECT_NO_THROW(Transaction{*m_connection});
}

TEST_P(TransactionTest, HoldsTheWriteLockFromItsStart) {
    const auto other = OpenAnother(OpenMode::ReadWrite);
    other->ExecuteScript(IsFile() ? "PRAGMA busy_timeout = 0" : "SET lock_timeout = 1");
    const Transaction transaction(*m_connection);
    const Error error = ErrorOf([&other] { const Transaction second(*other); });
    EXPECT_EQ(error.Kind(), ErrorKind::Busy);
    EXPECT_FALSE(other->InTransaction());
}

TEST_P(TransactionTest, ReadersGoOnBesideAWriter) {
    const auto reader = OpenAnother(OpenMode::ReadOnly);
    const Transaction writing(*m_connection);
    Insert("a");
    const Transaction reading(*reader);
    EXPECT_EQ(QueryInt(reader->Prepare("SELECT count(*) FROM thing")), 0);
}

TEST_P(TransactionTest, BeginningsAndRollbacksAreCounted) {
    const std::uint64_t transactions = m_connection->TransactionCount();
    const std::uint64_t rollbacks = m_connection->RollbackCount();
    { const Transaction transaction(*m_connection); }
    Transaction transaction(*m_connection);
    { const Savepoint savepoint(*m_connection); }
    transaction.Commit();
    EXPECT_EQ(m_connection->TransactionCount(), transactions + 2);
    EXPECT_EQ(m_connection->RollbackCount(), rollbacks + 2);
}

TEST_P(TransactionTest, ThoseThatBeginTogetherSeeOneMoment) {
    Insert("a");
    const auto first = OpenAnother(OpenMode::ReadOnly);
    const auto second = OpenAnother(OpenMode::ReadOnly);
    const std::vector<Connection*> readers = {first.get(), second.get()};
    const std::vector<Transaction> together = BeginTogether(readers);
    Insert("b");
    EXPECT_EQ(QueryInt(first->Prepare("SELECT count(*) FROM thing")), 1);
    EXPECT_EQ(QueryInt(second->Prepare("SELECT count(*) FROM thing")), 1);
}

// A server hands the moment itself on; a file only shows that it has passed.
TEST_P(TransactionTest, WriterBetweenTheirBeginningsIsNoticed) {
    const auto first = OpenAnother(OpenMode::ReadOnly);
    const auto second = OpenAnother(OpenMode::ReadOnly);
    second->WatchOthers();
    const Transaction transaction(*first);
    const std::string moment = first->ShareMoment();
    Insert("a");
    const Transaction later(*second);
    const bool hasJoined = second->JoinMoment(moment);
    EXPECT_EQ(hasJoined, !IsFile());
    EXPECT_EQ(QueryInt(second->Prepare("SELECT count(*) FROM thing")), IsFile() ? 1 : 0);
}

ON_EACH_LAYOUT(TransactionTest);

}  // namespace

}  // namespace recorddb::sql
