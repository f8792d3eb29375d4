#include "recorddb/sql/savepoint.h"

#include <new>
#include <stdexcept>

#include "recorddb/sql.h"
#include "recorddb/sql/dialect.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

using SavepointTest = OnEachEngine<SqlTest>;

TEST_P(SavepointTest, DestructorUndoesOnlyItsOwnWork) {
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

TEST_P(SavepointTest, ReleaseKeepsTheWork) {
    Transaction transaction(*m_connection);
    {
        Savepoint savepoint(*m_connection);
        Insert("inside");
        savepoint.Release();
    }
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, ReleasedWorkGoesWithTheTransaction) {
    {
        const Transaction transaction(*m_connection);
        Savepoint savepoint(*m_connection);
        Insert("inside");
        savepoint.Release();
    }
    EXPECT_EQ(Count(), 0);
}

TEST_P(SavepointTest, InnerOneIsUndoneAlone) {
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

TEST_P(SavepointTest, OuterOneTakesTheInnerOneWithIt) {
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

TEST_P(SavepointTest, StatementForLaterFailsBeforeTheSavepointIsReleased) {
    Transaction transaction(*m_connection);
    Insert("taken");
    {
        Savepoint savepoint(*m_connection);
        const Error error = ErrorOf([&] {
            InsertLater("new");
            InsertLater("taken");
            savepoint.Release();
        });
        EXPECT_EQ(error.Kind(), ErrorKind::UniqueViolation);
    }
    Insert("after");
    transaction.Commit();
    EXPECT_EQ(Count(), 2);
}

TEST_P(SavepointTest, StatementForLaterFailsBeforeAnInnerSavepointBegins) {
    Transaction transaction(*m_connection);
    Insert("taken");
    {
        const Savepoint outer(*m_connection);
        const Error error = ErrorOf([&] {
            InsertLater("taken");
            const Savepoint inner(*m_connection);
        });
        EXPECT_EQ(error.Kind(), ErrorKind::UniqueViolation);
    }
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, StatementForLaterIsUndoneWithItsSavepointAlone) {
    Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    InsertLater("outer");
    {
        const Savepoint inner(*m_connection);
        InsertLater("inner");
    }
    { const Savepoint empty(*m_connection); }
    outer.Release();
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, StatementForLaterIsUndoneWithItsTransaction) {
    {
        const Transaction transaction(*m_connection);
        InsertLater("one");
    }
    EXPECT_EQ(Count(), 0);
}

TEST_P(SavepointTest, StatementForLaterIsDoneAtOnceOutsideOfATransaction) {
    InsertLater("taken");
    EXPECT_EQ(ErrorOf([&] { InsertLater("taken"); }).Kind(), ErrorKind::UniqueViolation);
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, StatementForLaterFailsTheCommit) {
    Insert("taken");
    {
        Transaction transaction(*m_connection);
        const Error error = ErrorOf([&] {
            InsertLater("taken");
            transaction.Commit();
        });
        EXPECT_EQ(error.Kind(), ErrorKind::UniqueViolation);
    }
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, OneWithoutWritesEndsWithoutTouchingOthers) {
    Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    Insert("outer");
    {
        const Savepoint inner(*m_connection);
        Count();
    }
    EXPECT_EQ(Count(), 1);
    Insert("after");
    outer.Rollback();
    EXPECT_EQ(Count(), 0);
    const std::uint64_t rollbacks = m_connection->RollbackCount();
    { const Savepoint empty(*m_connection); }
    EXPECT_EQ(m_connection->RollbackCount(), rollbacks + 1);
    Insert("last");
    transaction.Commit();
    EXPECT_EQ(Count(), 1);
}

TEST_P(SavepointTest, UndoesUpdatesDeletionsAndIndexes) {
    Insert("a");
    Insert("b");
    Transaction transaction(*m_connection);
    for (const char* sql : {"UPDATE thing SET name = 'c' WHERE name = 'a'",
                            "DELETE FROM thing WHERE name = 'a'", "DELETE FROM thing",
                            "INSERT INTO thing (name) VALUES ('a') ON CONFLICT (name) "
                            "DO UPDATE SET size = 1"}) {
        const Savepoint savepoint(*m_connection);
        m_connection->Prepare(sql).Execute();
    }
    {
        const Savepoint savepoint(*m_connection);
        m_connection->ExecuteScript("CREATE INDEX by_size ON thing (size)");
    }
    transaction.Commit();
    EXPECT_FALSE(m_connection->HasIndex("by_size"));
    EXPECT_EQ(QueryInt(m_connection->Prepare("SELECT count(*) FROM thing "
                                             "WHERE name IN ('a', 'b') AND size IS NULL")),
              2);
}

TEST_P(SavepointTest, OnlyTheInnermostCanBeReleased) {
    const Transaction transaction(*m_connection);
    Savepoint outer(*m_connection);
    const Savepoint inner(*m_connection);
    EXPECT_THROW(outer.Release(), std::logic_error);
}

TEST_P(SavepointTest, EndedOneCannotBeReleased) {
    const Transaction transaction(*m_connection);
    Savepoint savepoint(*m_connection);
    savepoint.Release();
    EXPECT_THROW(savepoint.Release(), std::logic_error);
}

TEST_P(SavepointTest, NeedsATransaction) {
    EXPECT_THROW(Savepoint{*m_connection}, std::logic_error);
}

TEST_P(SavepointTest, OneThatOutlivesItsTransactionDoesNothing) {
    Transaction first(*m_connection);
    Savepoint savepoint(*m_connection);
    first.Rollback();
    Transaction second(*m_connection);
    Insert("a");
    savepoint.Rollback();
    second.Commit();
    EXPECT_EQ(Count(), 1);
}

// A connection that has no memory for undoing a savepoint; nothing else of it is used.
class ForgetfulConnection : public Connection {
  public:
    Statement& Prepare(std::string_view /*sql*/) override { throw std::bad_alloc(); }
    std::unique_ptr<Statement> PrepareOwn(std::string_view /*sql*/) override { return nullptr; }
    void ExecuteScript(std::string_view /*sql*/) override {}
    bool HasTable(std::string_view /*name*/) override { return false; }
    bool HasIndex(std::string_view /*name*/) override { return false; }
    const Dialect& GetDialect() const override { return m_dialect; }
    bool IsReadOnly() const override { return false; }
    bool TransactionSurvivesErrors() const override { return true; }

  protected:
    void Run(Control control) override {
        if (control == Control::RollbackToSavepoint) {
            throw std::bad_alloc();
        }
    }
    bool EngineInTransaction() const override { return true; }

  private:
    Dialect m_dialect{};
};

TEST(FailedUndoing, KeepsTheTransactionFromBeingCommitted) {
    ForgetfulConnection connection;
    {
        Transaction transaction(connection);
        { const Savepoint savepoint(connection); }
        EXPECT_THROW(transaction.Commit(), Error);
    }
    Transaction(connection).Commit();
}

ON_EACH_LAYOUT(SavepointTest);

}  // namespace

}  // namespace recorddb::sql
