// What is asked of a server together, so that it costs one round trip.
#include <atomic>

#include "recorddb/sql/savepoint.h"
#include "server_proxy.h"
#include "sql/sql_test.h"

namespace recorddb::sql {

namespace {

class RoundTripsTest : public SqlTest {
  protected:
    RoundTripsTest() : SqlTest(Engine::Postgres) {
        if (!IsFile()) {
            m_proxy = std::make_unique<ServerProxy>(
                SocketFolderOf(Path()), m_proxyFolder.Path(),
                [this](const ServerProxy::Message& message) { return Note(message.from); });
            m_connection = Open(UrlWithSocketIn(Path(), m_proxyFolder.Path()), OpenMode::ReadWrite);
            // Preparing it is a question of its own.
            Insert("first");
        }
    }
    ~RoundTripsTest() override { m_connection.reset(); }

    ServerProxy::Fate Note(ServerProxy::Side from) {
        if (from == ServerProxy::Side::Client && m_serverSpokeLast) {
            ++m_count;
        }
        m_serverSpokeLast = from == ServerProxy::Side::Server;
        return ServerProxy::Fate::Pass;
    }

    template <typename Work>
    int RoundTripsOf(Work work) {
        const int before = m_count;
        work();
        return m_count - before;
    }

    TemporaryFolder m_proxyFolder;
    bool m_serverSpokeLast = true;
    std::atomic<int> m_count = 0;
    std::unique_ptr<ServerProxy> m_proxy;
};

TEST_F(RoundTripsTest, SavepointsGoWithTheStatementsInThem) {
    Transaction transaction(*m_connection);
    EXPECT_EQ(RoundTripsOf([this] {
                  Savepoint outer(*m_connection);
                  Savepoint inner(*m_connection);
                  Insert("one");
                  inner.Release();
                  outer.Release();
              }),
              1);
    EXPECT_EQ(RoundTripsOf([&] { transaction.Commit(); }), 1);
}

TEST_F(RoundTripsTest, SavepointsWithoutStatementsCostNothing) {
    const Transaction transaction(*m_connection);
    EXPECT_EQ(RoundTripsOf([this] {
                  Savepoint released(*m_connection);
                  released.Release();
                  const Savepoint undone(*m_connection);
              }),
              0);
}

TEST_F(RoundTripsTest, ATransactionThatKeepsTheTurnBeginsInOne) {
    const auto begin = [this] {
        auto transaction = std::make_unique<Transaction>(*m_connection);
        m_connection->KeepTurn();
        return transaction;
    };
    begin()->Commit();
    std::unique_ptr<Transaction> transaction;
    EXPECT_EQ(RoundTripsOf([&] { transaction = begin(); }), 1);
    transaction->Commit();
}

TEST_F(RoundTripsTest, StatementsForLaterGoTogetherWithTheEndOfTheirSavepoint) {
    const Transaction transaction(*m_connection);
    Savepoint savepoint(*m_connection);
    EXPECT_EQ(RoundTripsOf([&] {
                  InsertLater("one");
                  InsertLater("two");
                  savepoint.Release();
              }),
              1);
}

}  // namespace

}  // namespace recorddb::sql
