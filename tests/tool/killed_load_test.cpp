#include <fmt/format.h>
#include <gmock/gmock.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>
#include <thread>

#include "child_process.h"
#include "load_fixture.h"
#include "tool/packet_reader.h"
#include "tool/source_list.h"

namespace tool {
namespace {

using testing::HasSubstr;

constexpr int kRecords = 2000;
constexpr int kKills = 30;

// A load of two thousand records of one data type that is killed over and over again.
class KilledLoad : public LoadFixture, public testing::WithParamInterface<std::string> {
  protected:
    // What the load under test builds on. Made once; every attempt begins with a copy.
    void MakeBase();
    // The configuration and the data of the load under test.
    std::vector<std::string> Sources();

    void BeginAnew() const;
    std::vector<std::string> Command(const std::vector<std::string>& sources) const;

    // The journal's word on where the next load has to begin; 0 when it has none.
    int NextOrdinal();

    // The rejected records that were set aside, each as often as it stands there.
    std::multiset<std::string> RejectsIn(const std::string& folder) const;

    std::string Base() const { return m_folder.File("base.db"); }
    std::string RejectsFolder() const { return m_folder.File("rejects"); }
    std::string DataFile() const { return m_folder.File("data.xml"); }

  private:
    std::vector<Fields> Bugs() const;
    std::vector<Fields> Histories() const;
    std::vector<Fields> Attachments() const;
};

std::vector<Fields> KilledLoad::Bugs() const {
    std::vector<Fields> bugs;
    for (int i = 0; i < kRecords; ++i) {
        Fields bug = {{"source_id", fmt::format("s{}", i)},
                      {"title", fmt::format("Bug {}", i)},
                      // The 98th of every hundred and one is rejected for this.
                      {"votes", i % 101 == 97 ? "many" : std::to_string(i)},
                      {"owner", fmt::format("u{}", i % 7)},
                      {"keywords", fmt::format("k{},k{}", i % 5, 5 + i % 3)},
                      {"log", "1\t2020-01-01 00:00:00\tu1\tsubmit\tnone\tNEW"}};
        // A duplicate of the bug before; some of these were rejected, and so are their duplicates.
        if (i % 14 == 3) {
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
             // 300 to 302 are missing.
             {"files", fmt::format("a{0}\n{1}.txt\n4\nthe file {0}", i, i % 303)}});
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
    for (int i = 0; i < 300; ++i) {
        m_folder.Write(fmt::format("files/{}.txt", i), fmt::format("content of {}", i));
    }
    Load({Configuration("users-configuration.xml", "record", "user", "login"),
          Records("users.xml", users),
          Configuration("keywords-configuration.xml", "record", "keyword", "name"),
          Records("keywords.xml", keywords)});
    if (GetParam() != "record") {
        Load({Configuration("bugs-configuration.xml", "record", "bug", "source_id"),
              Records("bugs.xml", Bugs())});
    }
    std::filesystem::rename(m_database, Base());
}

std::vector<std::string> KilledLoad::Sources() {
    const std::string& type = GetParam();
    return {Configuration("configuration.xml", type, "bug", "source_id",
                          type == "record" ? "<duplicate_id name=\"duplicate_of\"/>" : ""),
            Records("data.xml", type == "record"    ? Bugs()
                                : type == "history" ? Histories()
                                                    : Attachments())};
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
        ZTIMPORT,    "load",         m_database, "--attachments", m_folder.File("files"),
        "--rejects", RejectsFolder()};
    command.insert(command.end(), sources.begin(), sources.end());
    return command;
}

int KilledLoad::NextOrdinal() {
    const std::string next = Query(
        "SELECT next_ordinal FROM zt_journal WHERE source_name LIKE '%data.xml' "
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

TEST_P(KilledLoad, GoesOnToTheResultOfAnUndisturbedOne) {
    MakeBase();
    const std::vector<std::string> sources = Sources();
    BeginAnew();
    const auto start = std::chrono::steady_clock::now();
    ChildProcess undisturbed(Command(sources));
    const int code = undisturbed.Wait();
    const std::chrono::duration<double> whole = std::chrono::steady_clock::now() - start;
    ASSERT_EQ(code, 1) << undisturbed.Output();
    const std::string expected = Dump();
    const std::multiset<std::string> expectedRejects = RejectsIn(RejectsFolder());
    ASSERT_GT(expectedRejects.size(), 10U);

    const unsigned seed = std::random_device{}();
    SCOPED_TRACE(fmt::format("seed {}", seed));
    std::mt19937 random(seed);
    std::uniform_real_distribution<double> instant(0, whole.count() / 4);
    int kills = 0;
    int resumed = 0;
    BeginAnew();
    while (true) {
        const int next = NextOrdinal();
        ChildProcess load(Command(sources));
        if (kills < kKills) {
            std::this_thread::sleep_for(std::chrono::duration<double>(instant(random)));
            load.Signal(SIGKILL);
        }
        const int ended = load.Wait();
        if (ended == 128 + SIGKILL) {
            ++kills;
            continue;
        }
        ASSERT_EQ(ended, 1) << load.Output();
        if (next > 0) {
            ++resumed;
            EXPECT_THAT(load.Output(), HasSubstr(fmt::format("goes on behind record {},", next)));
        }
        EXPECT_EQ(Dump(), expected);
        EXPECT_EQ(RejectsIn(RejectsFolder()), expectedRejects);
        if (kills >= kKills) {
            break;
        }
        BeginAnew();
    }
    EXPECT_GT(resumed, 0);
}

INSTANTIATE_TEST_SUITE_P(DataTypes, KilledLoad, testing::Values("record", "history", "attachments"),
                         [](const auto& test) { return test.param; });

}  // namespace
}  // namespace tool
