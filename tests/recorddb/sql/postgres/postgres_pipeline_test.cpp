#include <atomic>
#include <string>

#include "server_proxy.h"
#include "sql/sql_test.h"

namespace recorddb::sql {
namespace {

class PostgresPipelineTest : public SqlTest {
  protected:
    PostgresPipelineTest() : SqlTest(Engine::Postgres) {}

    TemporaryFolder m_proxyFolder;
};

// What is sent is more than the sockets hold, so the end comes while there is more to send.
TEST_F(PostgresPipelineTest, IsLostWithAServerThatCrashesWhileItIsSent) {
    std::atomic<bool> crashes = false;
    const ServerProxy proxy(
        SocketFolderOf(Path()), m_proxyFolder.Path(), [&](const ServerProxy::Message& message) {
            return crashes && message.from == ServerProxy::Side::Client ? ServerProxy::Fate::Crash
                                                                        : ServerProxy::Fate::Pass;
        });
    m_connection = Open(UrlWithSocketIn(Path(), m_proxyFolder.Path()), OpenMode::ReadWrite);
    // Preparing it is a question of its own.
    Insert("first");
    Transaction transaction(*m_connection);
    crashes = true;
    const Error error = ErrorOf([&] {
        InsertLater(std::string(50'000, 'x'));
        InsertLater(std::string(5'000'000, 'x'));
        Count();
    });
    EXPECT_EQ(error.Kind(), ErrorKind::ConnectionLost) << error.DriverText();
}

}  // namespace
}  // namespace recorddb::sql
