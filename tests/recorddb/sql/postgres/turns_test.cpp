// How writers on a server take turns, one of which keeps its turn from transaction to transaction.
#include <chrono>
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

    // Returns once the work waits for a lock, or has ended. `process` is the server's for it.
    void AwaitThatItWaits(std::int64_t process, const std::future<void>& work) {
        Statement& holders = m_connection->Prepare("SELECT cardinality(pg_blocking_pids($1::int))");
        bool waits = false;
        while (!waits && work.wait_for(std::chrono::seconds(0)) == std::future_status::timeout) {
            holders.BindAll(process);
            waits = QueryInt(holders).value() != 0;
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
    AwaitThatItWaits(process, waiting);

    EXPECT_TRUE(WriteAndKeepTurn("two"));
    EXPECT_NO_THROW(waiting.get());
    EXPECT_FALSE(WriteAndKeepTurn("three"));
    EXPECT_TRUE(WriteAndKeepTurn("four"));
    EXPECT_EQ(Count(), 5);
}

}  // namespace

}  // namespace recorddb::sql
