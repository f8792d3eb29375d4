// Times `ztimport load`, and a short script that checks nothing, against a floor that writes the
// same rows by SQLite's own interface, and `ztimport check` and `verify` against the load, all in
// the same run, and loads of the same records as CSV and JSON by a map, against those of packets:
// load_bench ZTIMPORT [RECORDS...], 10000 and 100000 by default. Beside a server
// (scripts/private-server) it times loads into that, too.

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "child_run.h"
#include "creation_floor.h"
#include "generated_tracker.h"
#include "mapped_sources.h"
#include "server_loads.h"

namespace {

namespace fs = std::filesystem;

// The fastest of so many runs counts: what slows the others down comes from outside the program.
constexpr int kRuns = 3;

class TemporaryFolder {
  public:
    TemporaryFolder() {
        std::string pattern = (fs::temp_directory_path() / "load_bench_XXXXXX").string();
        if (mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a temporary folder");
        }
        m_path = pattern;
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    ~TemporaryFolder() { fs::remove_all(m_path); }
    const fs::path& Path() const { return m_path; }

  private:
    fs::path m_path;
};

struct Measured {
    double floor = 1e9;
    bench::ChildRun scriptCreate{1e9, 1e9, 0};
    bench::ChildRun scriptUpdate{1e9, 1e9, 0};
    bench::ChildRun create{1e9, 1e9, 0};
    bench::ChildRun update{1e9, 1e9, 0};
    bench::ChildRun history{1e9, 1e9, 0};
    bench::ChildRun check{1e9, 1e9, 0};
    bench::ChildRun verify{1e9, 1e9, 0};
    bench::ChildRun bare{1e9, 1e9, 0};
    std::vector<std::pair<std::string, bench::ChildRun>> mapped;  // the same records by maps
};

class LoadBench {
  public:
    LoadBench(std::string tool, std::int64_t records)
        : m_tool(std::move(tool)),
          m_records(records),
          m_packets{.keywords = bench::WriteKeywordPackets(m_folder.Path()),
                    .create = bench::WriteCreatePackets(m_folder.Path(), records),
                    .bare = bench::WriteBarePackets(m_folder.Path(), records),
                    .update = bench::WriteUpdatePackets(m_folder.Path(), records),
                    .history = bench::WriteHistoryPackets(m_folder.Path(), records)} {
        std::ofstream(m_folder.Path() / "schema.yaml") << bench::SchemaText();
        m_mapped = bench::WriteMappedSources(m_folder.Path(), records);
    }

    Measured Run() {
        Measured best;
        for (const bench::MappedSource& source : m_mapped) {
            best.mapped.emplace_back(source.name, bench::ChildRun{1e9, 1e9, 0});
        }
        for (int run = 0; run < kRuns; ++run) {
            best.floor = std::min(best.floor, bench::WriteFloor(NewDatabase("floor"), m_records));
            const fs::path plain = NewDatabase("plain");
            Load(plain, m_packets.keywords);
            KeepFaster(best.scriptCreate, RunScript("create", plain, m_packets.create));
            KeepFaster(best.scriptUpdate, RunScript("update", plain, m_packets.update));
            const fs::path database = NewDatabase("load");
            Load(database, m_packets.keywords);
            KeepFaster(best.check, Run("check", database, m_packets.create));
            KeepFaster(best.create, Load(database, m_packets.create));
            KeepFaster(best.verify, Run("verify", database, m_packets.create));
            KeepFaster(best.update, Load(database, m_packets.update));
            const fs::path bare = NewDatabase("bare");
            Load(bare, m_packets.keywords);
            KeepFaster(best.bare, Load(bare, m_packets.bare));
            KeepFaster(best.history, Load(bare, m_packets.history));
            for (std::size_t i = 0; i < m_mapped.size(); ++i) {
                KeepFaster(best.mapped[i].second, LoadMapped(m_mapped[i]));
            }
        }
        return best;
    }

    bench::ServerLoads RunOnServer(const std::string& url) {
        return bench::RunServerLoads(m_tool, url, m_folder.Path(), m_packets, kRuns);
    }

    double BytesPerRecord() const {
        return static_cast<double>(m_packets.create.bytes) / static_cast<double>(m_records);
    }

  private:
    static void KeepFaster(bench::ChildRun& best, const bench::ChildRun& run) {
        const long peak = std::max(best.peakKilobytes, run.peakKilobytes);
        best = run.seconds < best.seconds ? run : best;
        best.peakKilobytes = peak;
    }

    fs::path NewDatabase(const std::string& name) {
        for (const char* suffix : {"", "-wal", "-shm"}) {
            fs::remove(m_folder.Path() / (name + ".db" + suffix));
        }
        const fs::path database = m_folder.Path() / (name + ".db");
        bench::RunChild({m_tool, "init", database, m_folder.Path() / "schema.yaml"});
        return database;
    }

    bench::ChildRun Load(const fs::path& database, const bench::PacketFiles& files) {
        return Run("load", database, files);
    }

    bench::ChildRun LoadMapped(const bench::MappedSource& source) {
        const fs::path database = NewDatabase("mapped");
        Load(database, m_packets.keywords);
        return bench::RunChild(
            {m_tool, "load", "--quiet", database, "--map", source.map, source.file});
    }

    // The same records by a short script.
    static bench::ChildRun RunScript(const char* what, const fs::path& database,
                                     const bench::PacketFiles& files) {
        return bench::RunChild({PYTHON, PLAIN_LOAD, what, database, files.sources.back()});
    }

    bench::ChildRun Run(const char* name, const fs::path& database,
                        const bench::PacketFiles& files) {
        std::vector<std::string> command = {m_tool, name, "--quiet", database};
        command.insert(command.end(), files.sources.begin(), files.sources.end());
        return bench::RunChild(command);
    }

    std::string m_tool;
    std::int64_t m_records;
    TemporaryFolder m_folder;
    bench::TrackerPackets m_packets;
    std::vector<bench::MappedSource> m_mapped;
};

void PrintLoad(const char* name, const bench::ChildRun& run, double floor, std::int64_t records,
               double aim, double most) {
    const auto count = static_cast<double>(records);
    fmt::print(
        "  {:<8} {:8.3f} s  {:6.1f} us/record  {:9.0f} records/s  {:5.2f} floors (aim {}, at "
        "most {})  {:6.1f} MB\n",
        name, run.seconds, run.seconds / count * 1e6, count / run.seconds, run.seconds / floor, aim,
        most, static_cast<double>(run.peakKilobytes) / 1024);
}

void PrintScript(const char* name, const bench::ChildRun& run, double floor, std::int64_t records) {
    fmt::print("  {:<15} {:8.3f} s  {:6.1f} us/record  {:5.2f} floors\n", name, run.seconds,
               run.seconds / static_cast<double>(records) * 1e6, run.seconds / floor);
}

void PrintBesideLoad(const char* name, const bench::ChildRun& run, double load,
                     std::int64_t records) {
    fmt::print("  {:<8} {:8.3f} s  {:6.1f} us/record  {:5.2f} times the load  {:6.1f} MB\n", name,
               run.seconds, run.seconds / static_cast<double>(records) * 1e6, run.seconds / load,
               static_cast<double>(run.peakKilobytes) / 1024);
}

void PrintMeasured(const Measured& measured, std::int64_t records, double bytesPerRecord) {
    fmt::print("{} records of {:.0f} bytes of XML\n", records, bytesPerRecord);
    fmt::print("  {:<8} {:8.3f} s  {:6.1f} us/record\n", "floor", measured.floor,
               measured.floor / static_cast<double>(records) * 1e6);
    PrintLoad("create", measured.create, measured.floor, records, 2.2, 2.6);
    PrintLoad("update", measured.update, measured.floor, records, 1.4, 1.7);
    PrintLoad("history", measured.history, measured.floor, records, 1.1, 1.3);
    PrintScript("script: create", measured.scriptCreate, measured.floor, records);
    PrintScript("script: update", measured.scriptUpdate, measured.floor, records);
    PrintBesideLoad("check", measured.check, measured.create.seconds, records);
    PrintBesideLoad("verify", measured.verify, measured.create.seconds, records);
    PrintBesideLoad("bare", measured.bare, measured.bare.seconds, records);
    for (const auto& [name, run] : measured.mapped) {
        PrintBesideLoad(name.c_str(), run, measured.bare.seconds, records);
    }
}

void PrintServerLoad(const char* name, const bench::ServerLoad& load, double floor,
                     std::int64_t records, double most) {
    const auto count = static_cast<double>(records);
    fmt::print(
        "  server: {:<8} {:8.3f} s  {:6.1f} us/record  {:5.2f} floors (at most {})  {:6.3f} round "
        "trips/record (at most 0.1), {:+.2f} s when each takes 1 ms longer  {:6.1f} MB\n",
        name, load.run.seconds, load.run.seconds / count * 1e6, load.run.seconds / floor, most,
        static_cast<double>(load.roundTrips) / count, load.delayedSeconds - load.run.seconds,
        static_cast<double>(load.run.peakKilobytes) / 1024);
}

void PrintServerLoads(const bench::ServerLoads& loads, double floor, std::int64_t records) {
    PrintServerLoad("create", loads.create, floor, records, 5.5);
    PrintServerLoad("update", loads.update, floor, records, 2.8);
    PrintServerLoad("history", loads.history, floor, records, 4);
}

int Main(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        fmt::print(stderr, "usage: load_bench ZTIMPORT [RECORDS...]\n");
        return 2;
    }
    std::vector<std::int64_t> sizes = {10'000, 100'000};
    if (arguments.size() > 1) {
        sizes.clear();
        for (std::size_t i = 1; i < arguments.size(); ++i) {
            sizes.push_back(std::stoll(arguments[i]));
        }
    }
    double firstCost = 0;
    for (const std::int64_t records : sizes) {
        LoadBench bench(arguments[0], records);
        const Measured measured = bench.Run();
        PrintMeasured(measured, records, bench.BytesPerRecord());
        if (const char* const server = std::getenv("ZT_TEST_SERVER")) {
            PrintServerLoads(bench.RunOnServer(server), measured.floor, records);
        }
        const double cost = measured.create.seconds / static_cast<double>(records);
        if (firstCost > 0) {
            fmt::print(
                "  creating a record costs {:+.1f} % against {} records (aim: within 15 %)\n",
                (cost / firstCost - 1) * 100, sizes.front());
        } else {
            firstCost = cost;
        }
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Main(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        fmt::print(stderr, "load_bench: {}\n", error.what());
        return 1;
    }
}
