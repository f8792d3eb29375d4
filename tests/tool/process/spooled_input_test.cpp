#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "process_fixture.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

// A load from a pipe whose temporary files go to a folder of the test.
class SpooledInput : public ProcessFixture {
  protected:
    explicit SpooledInput(Engine engine) : ProcessFixture(engine) {
        fs::create_directory(Temporary());
        EXPECT_EQ(pipe2(m_pipe, O_CLOEXEC), 0);
        m_load.emplace(
            std::vector<std::string>{ZTIMPORT, "load", m_database,
                                     Configuration("c.xml", "record", "user", "login"), "-"},
            [this] {
                dup2(m_pipe[0], STDIN_FILENO);
                setenv("TMPDIR", Temporary().c_str(), 1);
            });
        close(m_pipe[0]);
    }

    std::string Temporary() const { return m_folder.File("temporary"); }

    void Send(const std::string& text) const {
        for (std::size_t sent = 0; sent < text.size();) {
            const ssize_t count = write(m_pipe[1], text.data() + sent, text.size() - sent);
            ASSERT_GT(count, 0);
            sent += static_cast<std::size_t>(count);
        }
    }

    int m_pipe[2] = {-1, -1};
    std::optional<ChildProcess> m_load;
};

class SpooledInputTest : public OnEachEngine<SpooledInput> {};

ON_EACH_ENGINE(SpooledInputTest);

TEST_P(SpooledInputTest, IsGoneWhenTheProcessIsKilled) {
    // More than the pipe holds: most of it has been copied when the last of it is sent.
    constexpr std::size_t size = std::size_t{1024} * 1024;
    Send("<records>" + std::string(size, ' '));
    m_load->Signal(SIGKILL);
    m_load->Wait();
    close(m_pipe[1]);
    EXPECT_TRUE(fs::is_empty(Temporary()));
}

TEST_P(SpooledInputTest, IsLoadedAndGone) {
    Send("<records>" + RecordXml({{"login", "ann"}}) + "</records>");
    close(m_pipe[1]);
    EXPECT_EQ(m_load->Wait(), 0) << m_load->Output();
    EXPECT_EQ(Query("SELECT login FROM \"user\""), "ann");
    EXPECT_TRUE(fs::is_empty(Temporary()));
}

using WaitForAPipe = ProcessFixture;

TEST_F(WaitForAPipe, EndsWithTheFirstInterrupt) {
    const std::string map = m_folder.Write("map.yaml",
                                           "map: 1\nsources: {users: {files: users.csv}}\nsteps:\n"
                                           "- {records: user, source: users, key: login, fields: "
                                           "{login: login}}\n");
    const std::string pipe = m_folder.File("users.csv");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    ChildProcess load({ZTIMPORT, "load", m_database, "--map", map, pipe});
    // Is opened when the load has opened it, too. Nothing is ever written.
    const int writer = open(pipe.c_str(), O_WRONLY | O_CLOEXEC);
    load.Signal(SIGINT);
    EXPECT_EQ(load.Wait(), 128 + SIGINT);
    EXPECT_THAT(load.Output(), testing::HasSubstr("users.csv: interrupted while waiting"));
    close(writer);
}

}  // namespace
}  // namespace tool
