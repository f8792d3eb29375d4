#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>

#include "child_process.h"
#include "faulty_tool.h"
#include "load_fixture.h"
#include "recorddb/sql.h"

namespace tool {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// The tool that verifies, as a process of its own.
class VerifyProcess : public LoadFixture {
  protected:
    using LoadFixture::LoadFixture;

    // Puts so many bugs into the database, and the same into a packet file after its
    // configuration.
    std::vector<std::string> Bugs(int count) {
        recorddb::sql::Open(m_database, recorddb::sql::OpenMode::ReadWrite)
            ->ExecuteScript(fmt::format(
                "DELETE FROM bug; INSERT INTO bug (dbid, id, state, source_id, title) "
                "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) "
                "SELECT i, {}, 'NEW', CAST(i AS TEXT), 'The title of ' || i FROM n",
                count, IsFile() ? "printf('BUG%08d', i)" : "'BUG' || lpad(i::text, 8, '0')"));
        const std::string file = m_folder.File(fmt::format("bugs{}.xml", count));
        std::ofstream out(file);
        out << "<records>\n";
        for (int i = count; i > 0; --i) {
            out << RecordXml(
                {{"source_id", std::to_string(i)}, {"title", fmt::format("The title of {}", i)}});
        }
        out << "</records>\n";
        return {Configuration("configuration.xml", "record", "bug", "source_id"), file};
    }

    std::vector<std::string> Command(const std::vector<std::string>& sources) const {
        std::vector<std::string> command = {ZTIMPORT, "verify", m_database};
        command.insert(command.end(), sources.begin(), sources.end());
        return command;
    }
};

class VerifyProcessTest : public OnEachEngine<VerifyProcess> {};

ON_EACH_ENGINE(VerifyProcessTest);

TEST_P(VerifyProcessTest, NamesTheTemporaryFolderWhenThatIsFull) {
    auto sources = Bugs(1);
    const std::string longTitle(std::size_t{200} * 1024, 'x');
    sources.push_back(
        Records("long.xml", std::vector<Fields>(50, {{"source_id", "1"}, {"title", longTitle}})));
    ChildProcess verify(Command(sources), [] {
        // Stands for a disk without room: no file of the process may grow beyond this. What is
        // kept of the records takes several MiB.
        std::signal(SIGXFSZ, SIG_IGN);
        constexpr rlim_t room = rlim_t{1024} * 1024;
        const rlimit limit{room, room};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("no limit");
        }
    });
    EXPECT_EQ(verify.Wait(), 2);
    EXPECT_THAT(verify.Output(), HasSubstr("the temporary file that verifying needs cannot be "
                                           "used"));
    EXPECT_THAT(verify.Output(), HasSubstr("name another one in TMPDIR"));
}

TEST_P(VerifyProcessTest, AnInterruptLeavesNothingBehind) {
    auto command = Command(Bugs(2'000));
    command.insert(command.end(), {"--report", m_folder.File("report.json")});
    // The second read of that file is in the middle of its records.
    FaultyTool verify({command.begin() + 1, command.end()}, "read@bugs2000.xml:2:INT");
    EXPECT_EQ(verify.Wait(), 128 + SIGINT);
    EXPECT_THAT(verify.Output(), HasSubstr("Stopped before the end"));
    for (const auto& entry : std::filesystem::directory_iterator(m_folder.Path())) {
        EXPECT_THAT(entry.path().filename(), Not(StartsWith("report")));
    }
}

}  // namespace
}  // namespace tool
