// How writers on a server take turns, one of which keeps its turn from transaction to transaction.
#include <future>

#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

class TurnsTest : public SqlTest {
  protected:
    TurnsTest() : SqlTest(Engine::Postgres) {}

    void SetUp() override {
        if (IsFile()) {
            GTEST_SKIP() << "there is no server";
        }
    }

    // Writes in a transaction that keeps the turn. Returns whether nobody else can have written
    // since the last one.
    bool WriteAndKeepTurn(std::string_view name) {
        Transaction transaction(*m_connection);
        const bool alone = m_connection->KeepTurn();
        Insert(name);
        transaction.Commit();
        return alone;
    }

    // Returns once a process of the server waits for a lock.
    void AwaitThatItWaits(std::int64_t process) {
        Statement& holders = m_connection->Prepare("SELECT cardinality(pg_blocking_pids($1::int))");
        std::int64_t count = 0;
        while (count == 0) {
            holders.BindAll(process);
            count = QueryInt(holders).value();
        }
    }
};

TEST_F(TurnsTest, AKeptTurnKeepsOthersFromWriting) {
    EXPECT_FALSE(WriteAndKeepTurn("one"));
    EXPECT_TRUE(WriteAndKeepTurn("two"));

    const auto other = OpenAnother(OpenMode::ReadWrite);
    other->ExecuteScript("SET lock_timeout = '1ms'");
    EXPECT_EQ(ErrorOf([&] { const Transaction transaction(*other); }).Kind(), ErrorKind::Busy);

    m_connection->LetOthersWrite();
    EXPECT_NO_THROW(const Transaction transaction(*other));
}

TEST_F(TurnsTest, AWriterThatWaitsGoesAheadOfOneThatKeepsItsTurn) {
    WriteAndKeepTurn("one");
    const auto other = OpenAnother(OpenMode::ReadWrite);
    const std::int64_t process = QueryInt(other->Prepare("SELECT pg_backend_pid()")).value();
    auto waiting = std::async(std::launch::async, [&] {
        Transaction transaction(*other);
        other->ExecuteScript("INSERT INTO thing (name) VALUES ('in between')");
        transaction.Commit();
    });
    AwaitThatItWaits(process);

    EXPECT_TRUE(WriteAndKeepTurn("two"));
    EXPECT_NO_THROW(waiting.get());
    EXPECT_FALSE(WriteAndKeepTurn("three"));
    EXPECT_TRUE(WriteAndKeepTurn("four"));
    EXPECT_EQ(Count(), 5);
}

}  // namespace

}  // namespace recorddb::sql
