#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <optional>

#include "faulty_tool.h"
#include "load_fixture.h"
#include "recorddb/database.h"
#include "recorddb/schema.h"
#include "temporary_folder.h"

namespace tool {
namespace {

using faults::Kind;
using testing::HasSubstr;

// A fault that a load of the example tracker meets at each of its points of a kind in turn.
struct Fault {
    std::string name;  // of the test
    Kind kind;
    std::string action;
    bool onwards;          // all later requests of the kind meet it, too
    std::uint64_t points;  // tried without ZT_EVERY_FAULT; 0 for every one
};

void PrintTo(const Fault& fault, std::ostream* out) {
    *out << fault.name;
}

class FaultInjection : public LoadFixture, public testing::WithParamInterface<Fault> {
  protected:
    FaultInjection() {
        m_database = m_folder.File("example.db");
        recorddb::Database::Create(m_database,
                                   recorddb::schema::ReadSchemaFile(Example("schema.yaml")));
        std::filesystem::rename(m_database, Base());
    }

    void BeginAnew() const {
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(m_database + suffix);
        }
        std::filesystem::remove_all(RejectsFolder());
        std::filesystem::remove(ReportFile());
        std::filesystem::copy_file(Base(), m_database);
    }

    std::vector<std::string> Command(const std::string& source) const {
        // Without its lines of progress, whose number depends on the time that the load takes.
        return {"load",      m_database,      "--quiet",  "--attachments", Example("attachments"),
                "--rejects", RejectsFolder(), "--report", ReportFile(),    source};
    }

    void MeetFault(const std::string& plan);

    static std::string Example(const std::string& file) {
        return std::string(ZT_EXAMPLE_DIR) + "/" + file;
    }
    std::string Base() const { return m_folder.File("base.db"); }
    std::string RejectsFolder() const { return m_folder.File("rejects"); }
    std::string ReportFile() const { return m_folder.File("report.json"); }

    std::string m_expected;

  private:
    void ExpectASoundDatabase();
    void ExpectATrueReport();
    void ExpectCompletion();
    std::size_t SetAside() const;
};

// Whatever became of the load: the database is whole, and its journal tells what is in it.
void FaultInjection::ExpectASoundDatabase() {
    EXPECT_EQ(Query("PRAGMA integrity_check"), "ok");
    EXPECT_EQ(Query("PRAGMA foreign_key_check"), "");
    EXPECT_EQ(Query("SELECT coalesce(sum(created), 0) || ' ' || coalesce(sum(history), 0) || ' ' ||"
                    " coalesce(sum(attachments), 0) || ' ' || coalesce(sum(duplicates), 0) "
                    "FROM zt_journal"),
              Query("SELECT ((SELECT count(*) FROM user) + (SELECT count(*) FROM component) + "
                    "(SELECT count(*) FROM keyword) + (SELECT count(*) FROM bug)) || ' ' || "
                    "(SELECT count(*) FROM zt_history) || ' ' || "
                    "(SELECT count(*) FROM zt_attachment) || ' ' || "
                    "(SELECT count(*) FROM zt_duplicate)"));
}

// A report may be missing when it could not be written, but not be wrong.
void FaultInjection::ExpectATrueReport() {
    std::ifstream file(ReportFile());
    if (!file) {
        return;
    }
    const auto report = nlohmann::json::parse(file, nullptr, false);
    ASSERT_FALSE(report.is_discarded()) << "the report is not whole";
    EXPECT_EQ(std::to_string(report["created"].get<int>()),
              Query("SELECT coalesce(sum(created), 0) FROM zt_journal"));
    EXPECT_EQ(report["rejected"].get<std::size_t>(), report["rejects"].size());
    EXPECT_LE(report["rejected"].get<std::size_t>(), SetAside());
}

// The number of records in the folder of rejects.
std::size_t FaultInjection::SetAside() const {
    std::size_t records = 0;
    if (std::filesystem::exists(RejectsFolder())) {
        for (const auto& entry : std::filesystem::directory_iterator(RejectsFolder())) {
            std::ifstream file(entry.path());
            const std::string text(std::istreambuf_iterator<char>(file), {});
            for (auto at = text.find("<record>"); at != std::string::npos;
                 at = text.find("<record>", at + 1)) {
                ++records;
            }
        }
    }
    return records;
}

// The same command once more, and a load of the rejected records if there are any, complete the
// load.
void FaultInjection::ExpectCompletion() {
    FaultyTool again(Command(Example("packets")));
    const int code = again.Wait();
    if (code == 0) {
        EXPECT_EQ(Dump(), m_expected);
        EXPECT_EQ(SetAside(), 0U);
        return;
    }
    ASSERT_EQ(code, 1) << again.Output();
    FaultyTool mended(
        {"load", m_database, "--attachments", Example("attachments"), RejectsFolder()});
    EXPECT_EQ(mended.Wait(), 0) << again.Output() << mended.Output();
    FaultyTool verify(
        {"verify", m_database, "--attachments", Example("attachments"), Example("packets")});
    EXPECT_EQ(verify.Wait(), 0) << verify.Output();
    ExpectASoundDatabase();
}

void FaultInjection::MeetFault(const std::string& plan) {
    SCOPED_TRACE(plan);
    BeginAnew();
    FaultyTool load(Command(Example("packets")), plan);
    const int code = load.Wait();
    SCOPED_TRACE(fmt::format("exit code {}\n{}", code, load.Output()));
    ASSERT_GT(load.Counts().faults, 0U);
    ExpectASoundDatabase();
    ExpectATrueReport();
    if (code == 0) {
        // What failed was tried again, or could be done without.
        EXPECT_EQ(Dump(), m_expected);
        return;
    }
    // A source that cannot be read is named as a bad source.
    EXPECT_THAT(code, testing::AnyOf(1, GetParam().kind == Kind::Read ? 2 : 3, 3));
    EXPECT_THAT(load.Output(), HasSubstr(code == 1 ? "rejected: " : "ztimport: "));
    ExpectCompletion();
}

TEST_P(FaultInjection, LeavesASoundDatabaseThatTheSameCommandCompletes) {
    BeginAnew();
    FaultyTool undisturbed(Command(Example("packets")));
    ASSERT_EQ(undisturbed.Wait(), 0) << undisturbed.Output();
    m_expected = Dump();

    const Fault& fault = GetParam();
    const std::uint64_t count = undisturbed.Counts().Of(fault.kind);
    ASSERT_GT(count, 0U);
    const bool every = fault.points == 0 || std::getenv("ZT_EVERY_FAULT") != nullptr;
    const std::uint64_t points = every ? count : std::min(count, fault.points);
    for (std::uint64_t i = 0; i < points; ++i) {
        MeetFault(fmt::format(
            "{}:{}{}:{}", faults::kKindNames.at(static_cast<std::size_t>(fault.kind)),
            count * (2 * i + 1) / (2 * points) + 1, fault.onwards ? "+" : "", fault.action));
        if (IsSkipped() || HasFatalFailure()) {
            return;
        }
    }
}

// A load by a map meets the same faults, in its temporary files, too.
class MappedFaultInjection : public LoadFixture, public testing::WithParamInterface<Fault> {
  protected:
    MappedFaultInjection() {
        std::filesystem::rename(m_database, m_folder.File("base.db"));
        m_folder.Write("map.yaml",
                       "map: 1\nsources: {rows: {files: rows.csv}, more: {files: more.json}}\n"
                       "steps:\n"
                       "- {records: user, source: rows, each: Who, same_key: first, key: login, "
                       "fields: {login: .}}\n"
                       "- {records: bug, source: rows, key: source_id, fields: {source_id: Nr, "
                       "title: Title, owner: Who}}\n"
                       "- {records: bug, source: more, key: source_id, mode: update, fields: "
                       "{source_id: nr, votes: votes}}\n");
        std::string rows = "Nr,Title,Who\n";
        std::string more = "[";
        for (int i = 0; i < 150; ++i) {
            rows += fmt::format("{0},Bug &lt; {0},u{1}\n", i, i % 7);
            more += fmt::format("{}{{\"nr\":{},\"votes\":{}}}", i == 0 ? "" : ",\n", i, i % 9);
        }
        m_folder.Write("rows.csv", rows);
        m_folder.Write("more.json", more + "]\n");
    }

    std::vector<std::string> Command(const std::string& name) const {
        return {name,
                m_database,
                "--map",
                m_folder.File("map.yaml"),
                m_folder.File("rows.csv"),
                m_folder.File("more.json")};
    }

    void BeginAnew() const {
        for (const char* suffix : {"", "-wal", "-shm"}) {
            std::filesystem::remove(m_database + suffix);
        }
        std::filesystem::copy_file(m_folder.File("base.db"), m_database);
    }
};

TEST_P(MappedFaultInjection, LeavesADatabaseThatTheSameCommandCompletes) {
    BeginAnew();
    FaultyTool undisturbed(Command("load"));
    ASSERT_EQ(undisturbed.Wait(), 0) << undisturbed.Output();
    const std::string expected = Dump();
    const std::uint64_t count = undisturbed.Counts().Of(GetParam().kind);
    ASSERT_GT(count, 0U);
    const std::uint64_t points = std::min(count, GetParam().points);
    for (std::uint64_t i = 0; i < points; ++i) {
        const std::string plan = fmt::format(
            "{}:{}:{}", faults::kKindNames.at(static_cast<std::size_t>(GetParam().kind)),
            count * (2 * i + 1) / (2 * points) + 1, GetParam().action);
        SCOPED_TRACE(plan);
        BeginAnew();
        FaultyTool load(Command("load"), plan);
        const int code = load.Wait();
        ASSERT_GT(load.Counts().faults, 0U);
        EXPECT_THAT(code, testing::AnyOf(0, 2, 3)) << load.Output();
        FaultyTool again(Command("load"));
        EXPECT_EQ(again.Wait(), 0) << load.Output() << again.Output();
        EXPECT_EQ(Dump(), expected) << load.Output() << again.Output();
        FaultyTool verify(Command("verify"));
        EXPECT_EQ(verify.Wait(), 0) << verify.Output();
    }
}

INSTANTIATE_TEST_SUITE_P(Of, MappedFaultInjection,
                         testing::Values(Fault{"AWriteOnAFullDisk", Kind::Write, "ENOSPC", false,
                                               12},
                                         Fault{"AWriteByAnError", Kind::Write, "EIO", false, 6},
                                         Fault{"AReadByAnError", Kind::Read, "EIO", false, 6}),
                         [](const auto& test) { return test.param.name; });

// The engine copies its log into the file when the database is closed, and tells nobody when that
// fails.
TEST(FaultInjectionOfInit, DatabaseThatIsNotWholeIsNotGivenItsName) {
    const TemporaryFolder folder;
    const std::vector<std::string> init = {"init", folder.File("new.db"),
                                           std::string(ZT_EXAMPLE_DIR) + "/schema.yaml"};
    FaultyTool whole(init);
    ASSERT_EQ(whole.Wait(), 0) << whole.Output();
    const std::uint64_t writes = whole.Counts().Of(Kind::Write);
    std::filesystem::remove(folder.File("new.db"));

    FaultyTool full(init, "write:" + std::to_string(writes - 5) + ":ENOSPC");
    EXPECT_EQ(full.Wait(), 3) << full.Output();
    EXPECT_EQ(folder.FileCount(), 0U);
}

INSTANTIATE_TEST_SUITE_P(
    Of, FaultInjection,
    testing::Values(Fault{"AWriteOnAFullDisk", Kind::Write, "ENOSPC", false, 16},
                    Fault{"AllWritesOnAFullDisk", Kind::Write, "ENOSPC", true, 8},
                    Fault{"AWriteByAnError", Kind::Write, "EIO", false, 8},
                    Fault{"AWriteThatIsCutShort", Kind::Write, "SHORT", false, 8},
                    Fault{"ASyncByAnError", Kind::Sync, "EIO", false, 0},
                    Fault{"ASyncOnAFullDisk", Kind::Sync, "ENOSPC", true, 0},
                    Fault{"ARenameOnAFullDisk", Kind::Rename, "ENOSPC", false, 0},
                    Fault{"ARenameByAnError", Kind::Rename, "EIO", false, 0},
                    Fault{"ATruncationByAnError", Kind::Truncate, "EIO", false, 0},
                    Fault{"ARemovalOfWhatIsBusy", Kind::Remove, "EBUSY", false, 0},
                    Fault{"ALockThatIsTaken", Kind::Lock, "EAGAIN", false, 6},
                    Fault{"AReadByAnError", Kind::Read, "EIO", false, 8},
                    Fault{"AnAllocation", Kind::Allocation, "ENOMEM", false, 20},
                    Fault{"AllAllocations", Kind::Allocation, "ENOMEM", true, 8}),
    [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tool
