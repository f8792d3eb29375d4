#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <set>

#include "faulty_tool.h"
#include "load_fixture.h"
#include "tool/sources/source_list.h"
#include "tool/sources/xml/packet_reader.h"

namespace tool {
namespace {

using testing::HasSubstr;

// Several of the groups that a load commits, and a few of the attachments that are missing.
constexpr const char* kRecordsOfAGroup = "10";
constexpr int kRecords = 52;
constexpr int kFiles = 40;

// A load of some ten records of one data type that is killed over and over again.
class KilledLoad : public LoadFixture, public testing::WithParamInterface<std::string> {
  protected:
    // What the load under test builds on. Made once; every attempt begins with a copy.
    void MakeBase();
    // The configuration and the data of the load under test.
    std::vector<std::string> Sources();

    void BeginAnew() const;
    // The load's command, without the tool's name.
    std::vector<std::string> Command(const std::vector<std::string>& sources) const;

    // Where the next load has to begin, as the journal says; 0 when it has no entry.
    int NextOrdinal();

    // The rejected records that were set aside, each as often as it stands there.
    std::multiset<std::string> RejectsIn(const std::string& folder) const;

    std::string Base() const { return m_folder.File("base.db"); }
    std::string RejectsFolder() const { return m_folder.File("rejects"); }
    std::string DataFile() const { return m_folder.File("data.xml"); }
    static bool IsMapped() { return GetParam() == "map"; }

  private:
    std::string MappedRows();
    std::vector<Fields> Bugs() const;
    std::vector<Fields> Histories() const;
    std::vector<Fields> Attachments() const;
};

std::vector<Fields> KilledLoad::Bugs() const {
    std::vector<Fields> bugs;
    for (int i = 0; i < kRecords; ++i) {
        Fields bug = {{"source_id", fmt::format("s{}", i)},
                      {"title", fmt::format("Bug {}", i)},
                      // The third of every nine is rejected for this.
                      {"votes", i % 9 == 2 ? "many" : std::to_string(i)},
                      {"owner", fmt::format("u{}", i % 7)},
                      {"keywords", fmt::format("k{},k{}", i % 5, 5 + i % 3)},
                      {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}};
        // A duplicate of the bug before; some of these were rejected, and so are their duplicates.
        if (i % 7 == 3) {
            bug.emplace_back("duplicate_of", fmt::format("s{}", i - 1));
        }
        bugs.push_back(std::move(bug));
    }
    return bugs;
}

std::vector<Fields> KilledLoad::Histories() const {
    std::vector<Fields> histories;
    for (int i = 0; i < kRecords; ++i) {
        histories.push_back(
            {{"source_id", fmt::format("s{}", i)},
             {"history", fmt::format("1\t2020-02-{:02} 10:00:00\tu1\topen\tNEW\tOPEN\n"
                                     "2\t2020-03-01 10:00:00\tu2\tclose\tOPEN\tCLOSED",
                                     1 + i % 28)}});
    }
    return histories;
}

std::vector<Fields> KilledLoad::Attachments() const {
    std::vector<Fields> attachments;
    for (int i = 0; i < kRecords; ++i) {
        attachments.push_back(
            {{"source_id", fmt::format("s{}", i)},
             // The three behind the last file are missing.
             {"files", fmt::format("a{0}\n{1}.txt\n4\nthe file {0}", i, i % (kFiles + 3))}});
    }
    return attachments;
}

void KilledLoad::MakeBase() {
    std::vector<Fields> users;
    for (int i = 0; i < 7; ++i) {
        users.push_back({{"login", fmt::format("u{}", i)}});
    }
    std::vector<Fields> keywords;
    for (int i = 0; i < 8; ++i) {
        keywords.push_back({{"name", fmt::format("k{}", i)}});
    }
    std::filesystem::create_directory(m_folder.File("files"));
    for (int i = 0; i < kFiles; ++i) {
        m_folder.Write(fmt::format("files/{}.txt", i), fmt::format("content of {}", i));
    }
    const std::vector<std::string> userSources = {
        Configuration("users-configuration.xml", "record", "user", "login"),
        Records("users.xml", users)};
    // What waits, waits for the users.
    if (GetParam() != "waiting") {
        Load(userSources);
    }
    Load({Configuration("keywords-configuration.xml", "record", "keyword", "name"),
          Records("keywords.xml", keywords)});
    if (GetParam() == "history" || GetParam() == "attachments") {
        Load({Configuration("bugs-configuration.xml", "record", "bug", "source_id"),
              Records("bugs.xml", Bugs())});
    }
    std::filesystem::rename(m_database, Base());
}

// Two steps of a map: bugs, of which some are rejected by the importer and some by the map, and an
// entry of history for each.
std::string KilledLoad::MappedRows() {
    m_folder.Write(
        "map.yaml",
        "map: 1\nsources: {data: {files: data.csv}}\nsteps:\n"
        "- {records: bug, source: data, key: source_id, fields: {source_id: Nr, title: Title, "
        "votes: Votes, owner: Owner, keywords: {from: Keywords, split: ','}}}\n"
        "- {history: bug, source: data, key: source_id, fields: {source_id: Nr, id: {value: '1'}, "
        "when: When, who: Owner, action: {value: submit}, before: {value: none}, after: {value: "
        "NEW}}}\n");
    std::string rows = "Nr,Title,Votes,Owner,Keywords,When\n";
    for (int i = 0; i < kRecords; ++i) {
        rows += fmt::format("s{},\"Bug &lt; {}\",{},u{},\"k{},k{}\",2020-02-{:02}\n",
                            i % 50 == 49 ? i - 1 : i, i, i % 9 == 2 ? "many" : std::to_string(i),
                            i % 7, i % 5, 5 + i % 3, 1 + i % 28);
    }
    return m_folder.Write("data.csv", rows);
}

std::vector<std::string> KilledLoad::Sources() {
    const std::string& type = GetParam();
    if (IsMapped()) {
        return {MappedRows()};
    }
    if (type == "history" || type == "attachments") {
        return {Configuration("configuration.xml", type, "bug", "source_id"),
                Records("data.xml", type == "history" ? Histories() : Attachments())};
    }
    std::vector<std::string> sources = {
        Configuration("configuration.xml", "record", "bug", "source_id",
                      "<duplicate_id name=\"duplicate_of\"/>"),
        Records("data.xml", Bugs())};
    if (type == "waiting") {
        sources.push_back(m_folder.File("users-configuration.xml"));
        sources.push_back(m_folder.File("users.xml"));
    }
    return sources;
}

void KilledLoad::BeginAnew() const {
    for (const char* suffix : {"", "-wal", "-shm"}) {
        std::filesystem::remove(m_database + suffix);
    }
    std::filesystem::remove_all(RejectsFolder());
    std::filesystem::copy_file(Base(), m_database);
}

std::vector<std::string> KilledLoad::Command(const std::vector<std::string>& sources) const {
    std::vector<std::string> command = {
        "load",      m_database,      "--attachments",   m_folder.File("files"),
        "--rejects", RejectsFolder(), "--group-records", kRecordsOfAGroup};
    if (IsMapped()) {
        command.insert(command.end(), {"--map", m_folder.File("map.yaml")});
    }
    command.insert(command.end(), sources.begin(), sources.end());
    return command;
}

int KilledLoad::NextOrdinal() {
    const std::string next = Query(
        "SELECT next_ordinal FROM zt_journal WHERE (source_name LIKE '%data.xml' OR source_name "
        "LIKE '%: bug from data') "
        "AND complete = 0");
    return next.empty() ? 0 : std::stoi(next);
}

std::multiset<std::string> KilledLoad::RejectsIn(const std::string& folder) const {
    std::multiset<std::string> rejects;
    if (!std::filesystem::exists(folder)) {
        return rejects;
    }
    const SourceList files({folder});
    for (const Source& source : files.Sources()) {
        PacketReader reader(source.path, source.name);
        SourceRecord record;
        while (!reader.IsConfiguration() && reader.NextRecord(record)) {
            rejects.emplace(record.raw);
        }
    }
    return rejects;
}

// Plans that kill a run at points which are spread over the whole of it, given what an undisturbed
// run was counted to do: so many of each kind, or as many as there are.
std::vector<std::string> KillsSpreadOver(const faults::FaultCounts& counts) {
    using faults::Kind;
    constexpr std::uint64_t kFew = 2;
    constexpr std::uint64_t kMany = 4;
    struct Share {
        Kind kind;
        std::uint64_t kills;
        const char* action;
    };
    std::vector<std::string> plans;
    for (const auto& [kind, kills, action] :
         {Share{Kind::Write, kMany, "KILL"}, Share{Kind::Write, kMany, "TORN"},
          Share{Kind::Allocation, kMany, "KILL"}, Share{Kind::Open, kFew, "KILL"},
          Share{Kind::Sync, kFew, "KILL"}, Share{Kind::Truncate, kFew, "KILL"},
          Share{Kind::Rename, kFew, "KILL"}, Share{Kind::Remove, kFew, "KILL"},
          Share{Kind::Folder, kFew, "KILL"}, Share{Kind::Lock, kFew, "KILL"}}) {
        const std::uint64_t count = counts.Of(kind);
        const std::uint64_t points = std::min(count, kills);
        for (std::uint64_t i = 1; i <= points; ++i) {
            plans.push_back(fmt::format("{}:{}:{}",
                                        faults::kKindNames.at(static_cast<std::size_t>(kind)),
                                        count * (2 * i - 1) / (2 * points) + 1, action));
        }
    }
    return plans;
}

TEST_P(KilledLoad, GoesOnToTheResultOfAnUndisturbedOne) {
    MakeBase();
    const std::vector<std::string> sources = Sources();
    BeginAnew();
    FaultyTool undisturbed(Command(sources));
    ASSERT_EQ(undisturbed.Wait(), 1) << undisturbed.Output();
    const std::string expected = Dump();
    const std::multiset<std::string> expectedRejects = RejectsIn(RejectsFolder());
    ASSERT_GT(expectedRejects.size(), 5U);

    const std::vector<std::string> kills = KillsSpreadOver(undisturbed.Counts());
    ASSERT_GT(kills.size(), 15U);
    int resumed = 0;
    for (std::size_t i = 0; i < kills.size(); ++i) {
        BeginAnew();
        // The load that goes on is killed as well, unless it ends before it comes to that point.
        for (const std::string& kill : {kills[i], kills[kills.size() - 1 - i]}) {
            SCOPED_TRACE(kill);
            FaultyTool load(Command(sources), kill);
            const int code = load.Wait();
            ASSERT_EQ(code, load.Counts().faults == 0 ? 1 : 128 + SIGKILL) << load.Output();
        }
        SCOPED_TRACE(kills[i] + " and " + kills[kills.size() - 1 - i]);
        const int next = NextOrdinal();
        FaultyTool load(Command(sources));
        ASSERT_EQ(load.Wait(), 1) << load.Output();
        if (next > 0) {
            ++resumed;
            EXPECT_THAT(load.Output(), HasSubstr(fmt::format("goes on behind record {},", next)));
        }
        EXPECT_EQ(Dump(), expected);
        EXPECT_EQ(RejectsIn(RejectsFolder()), expectedRejects);
    }
    EXPECT_GT(resumed, 5);
}

INSTANTIATE_TEST_SUITE_P(DataTypes, KilledLoad,
                         testing::Values("record", "history", "attachments", "map", "waiting"),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace tool
