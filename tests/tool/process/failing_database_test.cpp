#include <fmt/format.h>
#include <gmock/gmock.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

#include "child_process.h"
#include "load_fixture.h"
#include "recorddb/database.h"
#include "recorddb/sql.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// A load of some thousand bugs into a database that gives up on it.
class FailingDatabase : public LoadFixture {
  protected:
    explicit FailingDatabase(Engine engine = Engine::Sqlite) : LoadFixture(engine) {
        std::vector<Fields> bugs;
        for (int i = 0; i < 3000; ++i) {
            bugs.push_back({{"source_id", fmt::format("s{}", i)},
                            {"title", fmt::format("Bug {} of many", i)},
                            {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
        }
        m_sources = {Configuration("configuration.xml", "record", "bug", "source_id"),
                     Records("bugs.xml", bugs)};
    }

    std::vector<std::string> Command() const {
        return {ZTIMPORT, "load", m_database, m_sources[0], m_sources[1]};
    }

    // What is there is whole, and the journal says the same as the records.
    void ExpectNothingHalfWritten() {
        if (IsFile()) {
            EXPECT_EQ(Query("PRAGMA integrity_check"), "ok");
        }
        const std::string bugs = Query("SELECT count(*) FROM bug");
        EXPECT_EQ(Query("SELECT coalesce(sum(next_ordinal), 0) FROM zt_journal"), bugs);
        EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), bugs);
        EXPECT_LT(std::stoi(bugs), 3000);
    }

    void ExpectTheSameCommandCompletes() {
        ChildProcess again(Command());
        EXPECT_EQ(again.Wait(), 0) << again.Output();
        EXPECT_EQ(Query("SELECT count(*) FROM bug"), "3000");
        EXPECT_EQ(Query("SELECT count(*) FROM zt_history"), "3000");
    }

    std::vector<std::string> m_sources;
};

class LockedDatabase : public OnEachEngine<FailingDatabase> {
  protected:
    // For a file, the time is fixed.
    LockedDatabase() {
        if (!IsFile()) {
            m_database += "&options=-clock_timeout%3D1s";
        }
    }
};

ON_EACH_ENGINE(LockedDatabase);

TEST_P(LockedDatabase, EndsTheLoad) {
    {
        const auto other =
            recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadWrite);
        const auto lock = other->Begin();
        ChildProcess load(Command());
        EXPECT_EQ(load.Wait(), 3);
        EXPECT_THAT(load.Output(),
                    AllOf(HasSubstr(IsFile() ? "database is locked" : "lock timeout"),
                          HasSubstr("another program is writing to it"),
                          HasSubstr("start the same command again")));
    }
    ExpectNothingHalfWritten();
    ExpectTheSameCommandCompletes();
}

TEST_F(FailingDatabase, AFileThatMayNotGrowEndsTheLoad) {
    std::vector<std::string> command = Command();
    const std::string report = m_folder.File("report.json");
    command.insert(command.end(), {"--report", report});
    ChildProcess load(command, [] {
        // The system then refuses the write instead of ending the program.
        std::signal(SIGXFSZ, SIG_IGN);
        constexpr rlim_t kBytes = 400'000;
        const rlimit limit{kBytes, kBytes};
        if (setrlimit(RLIMIT_FSIZE, &limit) != 0) {
            throw std::runtime_error("no limit");
        }
    });
    EXPECT_EQ(load.Wait(), 3);
    EXPECT_THAT(load.Output(), AllOf(HasSubstr("the database failed"), HasSubstr("lets files grow"),
                                     HasSubstr("start the same command again")));
    ExpectNothingHalfWritten();
    std::ifstream file(report);
    EXPECT_THAT(std::string(std::istreambuf_iterator<char>(file), {}),
                HasSubstr("\"created\":" + Query("SELECT count(*) FROM bug") + ","));
    ExpectTheSameCommandCompletes();
}

// Mounts a small disk over a folder, for this process and its children only. False where that takes
// more rights than the test has.
bool MountDisk(const std::string& folder, const char* options) {
    const int spaces = CLONE_NEWNS | (geteuid() == 0 ? 0 : CLONE_NEWUSER);
    return unshare(spaces) == 0 && mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

TEST_F(FailingDatabase, AFullDiskEndsTheLoad) {
    const std::string disk = m_folder.File("disk");
    std::filesystem::create_directory(disk);
    if (!MountDisk(disk, "size=600k")) {
        GTEST_SKIP() << "a small disk cannot be mounted here";
    }
    std::filesystem::copy_file(m_database, disk + "/tracker.db");
    m_database = disk + "/tracker.db";
    {
        ChildProcess load(Command());
        EXPECT_EQ(load.Wait(), 3);
        EXPECT_THAT(load.Output(), AllOf(HasSubstr("full"), HasSubstr("make room on the disk"),
                                         HasSubstr("start the same command again")));
    }
    ASSERT_EQ(mount("tmpfs", disk.c_str(), "tmpfs", MS_REMOUNT, "size=60m"), 0);
    ExpectNothingHalfWritten();
    ExpectTheSameCommandCompletes();
    umount(disk.c_str());
}

}  // namespace
}  // namespace tool
