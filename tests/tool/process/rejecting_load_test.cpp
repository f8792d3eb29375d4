#include <fmt/format.h>
#include <gmock/gmock.h>

#include <csignal>
#include <map>
#include <string>
#include <utility>

#include "engine_cases.h"
#include "faulty_tool.h"
#include "load_fixture.h"
#include "recorddb/database.h"
#include "tool/sources/source_list.h"
#include "tool/sources/xml/packet_reader.h"

namespace tool {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::Pair;
using testing::SizeIs;

constexpr int kRejects = 5;

// Loads that set records aside in a folder and meet a fault.
class RejectingLoad : public LoadFixture {
  protected:
    using LoadFixture::LoadFixture;

    std::vector<std::string> Command(const std::string& records, const std::string& database = "") {
        return {"load",
                database.empty() ? m_database : database,
                "--rejects",
                m_folder.File("rejects"),
                Configuration("configuration.xml", "record", "bug", "source_id"),
                records};
    }

    // A packet of records that are all rejected.
    std::string Rejects(const std::string& name) {
        std::vector<Fields> bugs;
        for (int i = 0; i < kRejects; ++i) {
            bugs.push_back({{"source_id", fmt::format("{}{}", name, i)}, {"votes", "many"}});
        }
        return Records(name + ".xml", bugs);
    }

    // How often each record stands in the folder.
    std::map<std::string, int> SetAside() const {
        std::map<std::string, int> times;
        const SourceList files({m_folder.File("rejects")});
        for (const Source& source : files.Sources()) {
            PacketReader reader(source.path, source.name);
            SourceRecord record;
            while (!reader.IsConfiguration() && reader.NextRecord(record)) {
                ++times[std::string(record.raw)];
            }
        }
        return times;
    }

    std::string RejectsInTheJournal() { return Query("SELECT count(*) FROM zt_journal_reject"); }
};

class RejectingLoadTest : public OnEachEngine<RejectingLoad> {};

ON_EACH_ENGINE(RejectingLoadTest);

TEST_P(RejectingLoadTest, SaysRejectedOnlyWhenTheRecordsAreOnTheDisk) {
    const auto command = Command(Rejects("a"));
    // The first time, the file is made.
    FaultyTool load(command, "sync@0001-records.xml:2:EIO");
    EXPECT_EQ(load.Wait(), 3);
    EXPECT_EQ(load.Counts().faults, 1U);
    EXPECT_THAT(load.Output(), HasSubstr("0001-records.xml: cannot be written"));
    EXPECT_EQ(RejectsInTheJournal(), "0");
    FaultyTool again(command);
    EXPECT_EQ(again.Wait(), 1);
    EXPECT_EQ(RejectsInTheJournal(), std::to_string(kRejects));
    EXPECT_THAT(SetAside(), testing::AllOf(SizeIs(kRejects), Each(Pair(testing::_, 1))));
}

// Where it is killed, with a name for that.
using KillPoint = std::pair<const char*, const char*>;

using RejectingLoadThatIsKilled = CasesOnEachEngine<RejectingLoad, KillPoint>;

TEST_P(RejectingLoadThatIsKilled, HasSetEveryRecordAsideOnceWhenItHasGoneOn) {
    const auto command = Command(Rejects("a"));
    FaultyTool load(command, TheCase().second);
    EXPECT_EQ(load.Wait(), 128 + SIGKILL) << load.Output();
    FaultyTool again(command);
    EXPECT_EQ(again.Wait(), 1) << again.Output();
    EXPECT_THAT(SetAside(), testing::AllOf(SizeIs(kRejects), Each(Pair(testing::_, 1))));
    EXPECT_EQ(RejectsInTheJournal(), std::to_string(kRejects));
}

constexpr KillPoint kKillPoints[] = {{"Folder", "folder@rejects:1:KILL"},
                                     {"Configuration", "write@rejects:1:TORN"},
                                     {"NameOfTheConfiguration", "rename@rejects:1:KILL"},
                                     {"RecordsFile", "write@rejects:2:TORN"},
                                     {"NameOfTheRecordsFile", "rename@rejects:2:KILL"},
                                     {"HalfAnEntry", "write@rejects:3:TORN"},
                                     {"SecondEntry", "write@rejects:4:KILL"},
                                     {"HalfTheThirdEntry", "write@rejects:5:TORN"},
                                     {"FourthEntry", "write@rejects:6:KILL"},
                                     {"Sync", "sync@0001-records:2:KILL"}};

INSTANTIATE_TEST_SUITE_P(Points, RejectingLoadThatIsKilled,
                         OnEachEngineOf(testing::ValuesIn(kKillPoints)),
                         NamedWithEngine([](const KillPoint& point) { return point.first; }));

TEST_P(RejectingLoadTest, SharesItsFolderWithAnotherAtTheSameTime) {
    const DatabasePlace other(GetParam(), m_folder.File("other.db"));
    recorddb::Database::Create(
        other.Location(),
        recorddb::Database::Open(m_database, recorddb::Database::Mode::ReadOnly)->GetSchema());
    const auto first = Command(Rejects("a"));
    const auto second = Command(Rejects("b"), other.Location());
    // Held where it has chosen a number, and is about to give its file that name.
    FaultyTool held(first, "rename@rejects:1:STOP");
    ASSERT_TRUE(held.WaitUntilHeld());
    FaultyTool load(second);
    held.GoOn();
    EXPECT_EQ(held.Wait(), 1);
    EXPECT_EQ(load.Wait(), 1);
    EXPECT_THAT(SetAside(), testing::AllOf(SizeIs(2 * kRejects), Each(Pair(testing::_, 1))));
}

}  // namespace
}  // namespace tool
