// Two loads at once into one database. Each is held in the middle, when it has written, until the
// other has.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "child_process.h"
#include "faulty_tool.h"
#include "load_fixture.h"

namespace tool {
namespace {

using testing::AllOf;
using testing::HasSubstr;

// So many bugs stand in each of the parts of a source.
constexpr int kBugsOfAPart = 10;

class TwoLoads : public LoadFixture {
  protected:
    explicit TwoLoads(Engine engine) : LoadFixture(engine) {
        // However long the one takes, the other waits for its turn. For files that time is fixed.
        if (!IsFile()) {
            m_database += "&options=-clock_timeout%3D1h";
        }
    }

    // What a load came to: its exit code, what it said, and its report.
    struct Outcome {
        int code;
        std::string said;
        std::string report;

        // A number in the report.
        int Count(const std::string& name) const {
            const std::size_t at = report.find("\"" + name + "\":");
            return at == std::string::npos ? -1 : std::stoi(report.substr(at + name.size() + 3));
        }
    };

    // The load's command, without the tool's name. Each record is a group, so nothing is open when
    // the load is held.
    std::vector<std::string> Command(const std::string& report, const std::string& configuration,
                                     const std::string& data,
                                     const std::string& workers = "1") const {
        return {"load", m_database,  configuration, data,       "--group-records",
                "1",    "--workers", workers,       "--report", ReportFile(report)};
    }

    template <typename Load>
    Outcome Wait(Load& load, const std::string& report) const {
        const int code = load.Wait();
        return {code, load.Output(), ContentOf(ReportFile(report))};
    }

    std::string ReportFile(const std::string& name) const { return m_folder.File(name + ".json"); }

    // Bugs in parts, of which each stands in a block of its own of those in which files are read.
    std::string Bugs(const std::string& file, const std::vector<std::vector<int>>& parts) {
        std::string text = "<records>\n";
        for (const std::vector<int>& part : parts) {
            for (const int i : part) {
                text += RecordXml({{"source_id", fmt::format("s{}", i)},
                                   {"title", fmt::format("{} {}", file, i)},
                                   {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}});
            }
            text.resize((text.size() / kBlock + 1) * kBlock, ' ');
        }
        return m_folder.Write(file, text + "</records>\n");
    }

    // As many numbers as a part has bugs: some, and those from `first` on.
    static std::vector<int> Part(int first, std::vector<int> some = {}) {
        while (static_cast<int>(some.size()) < kBugsOfAPart) {
            some.push_back(first++);
        }
        return some;
    }

    // Where a load of such a file of so many parts is held: when it has written the first ones and
    // reads the next one. For its hash, the file is read as a whole before.
    static std::string BehindPart(int part, const std::string& file, int parts) {
        return fmt::format("read@{}:{}:STOP", file, parts + 1 + part + 1);
    }

    std::string Creation() { return Configuration("create.xml", "record", "bug", "source_id"); }
    std::string Upsert() {
        return Configuration("upsert.xml", "record", "bug", "source_id",
                             "<updaterecord name=\"TRUE\"/><updateinsert name=\"TRUE\"/>");
    }

    std::string Count(const std::string& condition) {
        return Query("SELECT count(*) FROM bug WHERE " + condition);
    }

    // The numbers of the bugs are those from 1 on without a gap.
    void ExpectBugs(int count) {
        EXPECT_EQ(Query("SELECT count(DISTINCT source_id) || ' ' || max(dbid) FROM bug"),
                  fmt::format("{0} {0}", count));
    }

  private:
    static constexpr std::size_t kBlock = std::size_t{1024} * 1024;
};

class TwoLoadsTest : public OnEachEngine<TwoLoads> {};

ON_EACH_ENGINE(TwoLoadsTest);

// A record that is in both sources is created by one load, and updated by the other one.
TEST_P(TwoLoadsTest, OfDifferentSourcesComeToTheirSum) {
    const std::string configuration = Upsert();
    const std::string a = Bugs("a.xml", {Part(0), Part(10)});
    const std::string b = Bugs("b.xml", {Part(20, {8, 9, 18, 19}), Part(26)});
    FaultyTool first(Command("a", configuration, a), BehindPart(1, "a.xml", 2));
    ASSERT_TRUE(first.WaitUntilHeld()) << first.Output();
    FaultyTool second(Command("b", configuration, b), BehindPart(1, "b.xml", 2));
    ASSERT_TRUE(second.WaitUntilHeld()) << second.Output();
    EXPECT_EQ(Count("title LIKE 'a.xml%'"), "8");
    EXPECT_EQ(Count("title LIKE 'b.xml%'"), "10");
    first.GoOn();
    second.GoOn();
    const Outcome ofA = Wait(first, "a");
    const Outcome ofB = Wait(second, "b");
    for (const Outcome& outcome : {ofA, ofB}) {
        EXPECT_EQ(outcome.code, 0) << outcome.said;
        EXPECT_EQ(outcome.Count("created"), 18);
        EXPECT_EQ(outcome.Count("updated"), 2);
    }
    ExpectBugs(36);
    EXPECT_EQ(Query("SELECT source_id || zt_version || substr(title, 1, 1) FROM bug "
                    "WHERE zt_version > 1 ORDER BY 1"),
              "s182a\ns192a\ns82b\ns92b");
    EXPECT_EQ(Query("SELECT created || ' ' || updated || ' ' || complete FROM zt_journal"),
              "18 2 1\n18 2 1");
}

TEST_P(TwoLoadsTest, OfDifferentSourcesRejectWhatTheOtherHasCreated) {
    const std::string configuration = Creation();
    const std::string a = Bugs("a.xml", {Part(0), Part(10)});
    const std::string b = Bugs("b.xml", {Part(20, {9, 19}), Part(28)});
    FaultyTool first(Command("a", configuration, a), BehindPart(1, "a.xml", 2));
    ASSERT_TRUE(first.WaitUntilHeld()) << first.Output();
    FaultyTool second(Command("b", configuration, b), BehindPart(1, "b.xml", 2));
    ASSERT_TRUE(second.WaitUntilHeld()) << second.Output();
    EXPECT_EQ(Count("true"), "19");
    first.GoOn();
    second.GoOn();
    const Outcome ofA = Wait(first, "a");
    const Outcome ofB = Wait(second, "b");
    for (const auto& [outcome, record] :
         {std::pair(ofA, "a.xml, record 20 (s19)"), std::pair(ofB, "b.xml, record 1 (s9)")}) {
        EXPECT_EQ(outcome.code, 1);
        EXPECT_THAT(outcome.said, AllOf(HasSubstr(record), HasSubstr("source_id")));
        EXPECT_EQ(outcome.Count("created"), 19);
        EXPECT_EQ(outcome.Count("rejected"), 1);
    }
    ExpectBugs(38);
    EXPECT_EQ(Query("SELECT created || ' ' || rejected || ' ' || complete FROM zt_journal"),
              "19 1 1\n19 1 1");
}

// The later load takes the source over, and goes on where the earlier one stands.
TEST_P(TwoLoadsTest, OfOneSourceBringEachRecordOnce) {
    const std::string configuration = Creation();
    const std::string data = Bugs("data.xml", {Part(0), Part(10), Part(20)});
    FaultyTool first(Command("first", configuration, data), BehindPart(1, "data.xml", 3));
    ASSERT_TRUE(first.WaitUntilHeld()) << first.Output();
    FaultyTool second(Command("second", configuration, data), BehindPart(2, "data.xml", 3));
    ASSERT_TRUE(second.WaitUntilHeld()) << second.Output();
    EXPECT_EQ(Count("true"), "20");
    first.GoOn();
    const Outcome earlier = Wait(first, "first");
    EXPECT_EQ(earlier.code, 3) << earlier.said;
    EXPECT_THAT(earlier.said, HasSubstr("another load of " + data));
    EXPECT_EQ(earlier.Count("created"), 10);
    second.GoOn();
    const Outcome later = Wait(second, "second");
    EXPECT_EQ(later.code, 0) << later.said;
    EXPECT_THAT(later.said, HasSubstr("goes on behind record 10,"));
    EXPECT_EQ(later.Count("created"), 20);
    ExpectBugs(30);
    EXPECT_EQ(Query("SELECT created || ' ' || complete FROM zt_journal"), "30 1");
}

// A load with workers keeps its turn until another one waits for it, so it is not held here: what
// holds, holds whichever of the two is the faster one.
class TwoLoadsWithWorkers : public TwoLoads {
  protected:
    TwoLoadsWithWorkers() : TwoLoads(Engine::Postgres) {}

    ChildProcess Start(const std::string& name, const std::string& configuration,
                       const std::string& data) const {
        std::vector<std::string> command = Command(name, configuration, data, "2");
        command.insert(command.begin(), ZTIMPORT);
        return ChildProcess(command);
    }
};

TEST_F(TwoLoadsWithWorkers, OfDifferentSourcesComeToTheirSum) {
    const std::string configuration = Upsert();
    ChildProcess first =
        Start("a", configuration, Bugs("a.xml", {Part(0), Part(10), Part(20), Part(30)}));
    ChildProcess second =
        Start("b", configuration, Bugs("b.xml", {Part(30), Part(40), Part(50), Part(60)}));
    const Outcome ofA = Wait(first, "a");
    const Outcome ofB = Wait(second, "b");
    EXPECT_EQ(ofA.code, 0) << ofA.said;
    EXPECT_EQ(ofB.code, 0) << ofB.said;
    EXPECT_EQ(ofA.Count("created") + ofB.Count("created"), 70);
    EXPECT_EQ(ofA.Count("updated") + ofB.Count("updated"), 10);
    ExpectBugs(70);
    EXPECT_EQ(Count("zt_version = 2"), "10");
}

// One load may be told that the other has taken the source over.
TEST_F(TwoLoadsWithWorkers, OfOneSourceBringEachRecordOnce) {
    const std::string configuration = Creation();
    const std::string data = Bugs("data.xml", {Part(0), Part(10), Part(20), Part(30)});
    ChildProcess first = Start("first", configuration, data);
    ChildProcess second = Start("second", configuration, data);
    const Outcome outcomes[] = {Wait(first, "first"), Wait(second, "second")};
    for (const Outcome& outcome : outcomes) {
        EXPECT_THAT(outcome.code, testing::AnyOf(0, 3)) << outcome.said;
        EXPECT_EQ(outcome.code == 3,
                  outcome.said.find("another load of " + data) != std::string::npos)
            << outcome.said;
    }
    EXPECT_TRUE(outcomes[0].code == 0 || outcomes[1].code == 0);
    EXPECT_EQ(outcomes[0].Count("created") + outcomes[1].Count("created"), 40);
    ExpectBugs(40);
}

}  // namespace
}  // namespace tool
