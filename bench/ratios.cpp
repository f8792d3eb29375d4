#include "ratios.h"

#include <fmt/format.h>

#include <array>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

#include "bench_data.h"
#include "creation_floor.h"
#include "mapped_sources.h"
#include "round_trips.h"
#include "server_proxy.h"
#include "server_time.h"
#include "spread.h"
#include "tracker_loads.h"

namespace bench {

namespace {

constexpr int kRounds = 5;

// Limits that loads have to keep, and aims, in floors.
constexpr EachKind<const char*> kLimits = {"at most 2.6, aim 2.2", "at most 1.7, aim 1.4",
                                           "at most 1.3, aim 1.1"};
constexpr EachKind<const char*> kServerLimits = {"at most 5.5", "at most 2.8", "at most 4"};
constexpr double kMostRoundTrips = 0.1;
constexpr double kMostRoundTripsOfAttachment = 3;
constexpr double kMostDelay = 2;

class RatioBench {
  public:
    RatioBench(std::string tool, std::int64_t records)
        : m_tool(std::move(tool)),
          m_data(records),
          m_files(m_tool, m_data.Folder()),
          m_mappedPackets(MapReferences(m_data.Folder(), m_data.Packets().bare)),
          m_mappedSources(WriteMappedSources(m_data.Folder(), records)),
          m_mapped(m_mappedSources.size()) {}

    void RunRound() {
        RunScript();
        RunTrackerLoads(
            m_files, m_data.Packets(),
            [this](Kind kind, const std::string& database, const std::function<Run()>& load) {
                kind == Kind::Create ? CompareCreation(database, load)
                                     : Of(m_loads, kind).Add(Floor(), load());
            });
        RunMaps();
    }

    // As the tool loads by itself, and by one worker.
    void RunServerRound(const std::string& server) {
        RunServerLoads(server, std::nullopt, m_serverLoads);
        RunServerLoads(server, 1, m_loadsOfOneWorker);
    }

    RoundTripsOfLoads CountRoundTrips(const std::string& server) const {
        return bench::CountRoundTrips(m_tool, server, m_data.Folder(), m_data.Packets());
    }

    const BenchData& Data() const { return m_data; }

    void PrintFiles() const {
        PrintHead();
        for (std::size_t kind = 0; kind < kKindNames.size(); ++kind) {
            PrintPairs(kKindNames.at(kind), m_loads.at(kind), "floors", kLimits.at(kind));
        }
        PrintPairs("script: create", m_scriptCreate, "floors", "");
        PrintPairs("script: update", m_scriptUpdate, "floors", "");
        PrintPairs("check", m_check, "times create", "");
        PrintPairs("verify", m_verify, "times create", "");
        PrintPairs("mapped packets", m_mappedPacketLoads, "floors", "");
        for (std::size_t i = 0; i < m_mapped.size(); ++i) {
            PrintPairs(m_mappedSources.at(i).name, m_mapped.at(i), "times mapped packets",
                       m_mappedSources.at(i).limit);
        }
    }

    void PrintServer() const {
        for (std::size_t kind = 0; kind < kKindNames.size(); ++kind) {
            PrintPairs(std::string("server: ") + kKindNames.at(kind), m_serverLoads.at(kind),
                       "floors", kServerLimits.at(kind));
            PrintPairs("  by one worker", m_loadsOfOneWorker.at(kind), "floors", "");
        }
    }

  private:
    Run Floor() {
        const Run floor = WriteFloor(m_files.New("floor"), m_data.Records());
        m_floor.Add(floor, floor);
        return floor;
    }

    void RunServerLoads(const std::string& server, std::optional<std::size_t> workers,
                        EachKind<Pairs>& loads) {
        ServerDatabases databases(m_tool, server, m_data.Folder(),
                                  ServerBehind(SocketFolderOf(server)), workers);
        RunTrackerLoads(databases, m_data.Packets(),
                        [&](Kind kind, const std::string&, const std::function<Run()>& load) {
                            const Run floor = Floor();
                            Of(loads, kind).Add(floor, load());
                        });
    }

    // The same records by a short script.
    void RunScript() {
        const std::string database = NewTracker(m_files, "script", m_data.Packets());
        const auto run = [&](const char* what, const PacketFiles& files) {
            return RunChild({PYTHON, PLAIN_LOAD, what, database, files.sources.back()});
        };
        const Run before = Floor();
        m_scriptCreate.Add(before, run("create", m_data.Packets().create));
        const Run between = Floor();
        m_scriptUpdate.Add(between, run("update", m_data.Packets().update));
    }

    void CompareCreation(const std::string& database, const std::function<Run()>& load) {
        const PacketFiles& packets = m_data.Packets().create;
        const Run check = RunOn(m_files, "check", database, packets);
        const Run floor = Floor();
        const Run create = load();
        Of(m_loads, Kind::Create).Add(floor, create);
        m_check.Add(create, check);
        m_verify.Add(create, RunOn(m_files, "verify", database, packets));
    }

    // Each mapped source beside packets with the same records and the same mapping of references.
    void RunMaps() {
        for (std::size_t i = 0; i < m_mapped.size(); ++i) {
            const MappedSource& source = m_mappedSources[i];
            const Run floor = Floor();
            const Run packets = RunOn(
                m_files, "load", NewTracker(m_files, "mapping", m_data.Packets()), m_mappedPackets);
            m_mappedPacketLoads.Add(floor, packets);
            const std::string database = NewTracker(m_files, "mapped", m_data.Packets());
            m_mapped[i].Add(packets, m_files.RunTool({"load", "--quiet", database, "--map",
                                                      source.map, source.file}));
        }
    }

    void PrintHead() const {
        const Run floor = m_floor.Typical();
        const auto records = static_cast<double>(m_data.Records());
        fmt::print(
            "{} records of {:.0f} bytes of XML, {} rounds. A floor takes {:.3f} s, {:.1f} us "
            "a record; {:.3f} s of processors.\n",
            m_data.Records(), static_cast<double>(m_data.Packets().create.bytes) / records, kRounds,
            floor.seconds, floor.seconds / records * 1e6, floor.processorSeconds);
        fmt::print(
            "Middle values; s: on the clock, cpu: of processors (tool + server); ratios: on "
            "the clock | of processors (lowest to highest)\n");
    }

    void PrintPairs(const std::string& name, const Pairs& pairs, const char* unit,
                    const char* limit) const {
        const Run run = pairs.Typical();
        fmt::print(
            "  {:<15} {:6.3f} s {:6.1f} us  cpu {:6.3f} + {:5.2f} s  {} | {} {}{}{}  "
            "{:.1f} MB\n",
            name, run.seconds, run.PerRecord(m_data.Records()).seconds * 1e6, run.processorSeconds,
            run.serverSeconds, Text(pairs.OnTheClock()), Text(pairs.OfProcessors()), unit,
            *limit == 0 ? "" : ", ", limit, static_cast<double>(run.peakKilobytes) / 1024);
    }

    static std::string Text(const Spread& spread) {
        return fmt::format("{:5.2f} ({:.2f} to {:.2f})", spread.median, spread.lowest,
                           spread.highest);
    }

    std::string m_tool;
    BenchData m_data;
    DatabaseFiles m_files;
    PacketFiles m_mappedPackets;
    std::vector<MappedSource> m_mappedSources;
    Pairs m_floor;
    EachKind<Pairs> m_loads;
    EachKind<Pairs> m_serverLoads;
    EachKind<Pairs> m_loadsOfOneWorker;
    Pairs m_scriptCreate;
    Pairs m_scriptUpdate;
    Pairs m_check;
    Pairs m_verify;
    Pairs m_mappedPacketLoads;
    std::vector<Pairs> m_mapped;
};

void PrintRoundTrips(const std::string& name, const RoundTrips& trips, std::int64_t records,
                     double most) {
    fmt::print(
        "  server: {:<12} {:6.3f} round trips each (at most {}); all {:+.2f} s when each "
        "trip takes 1 ms longer",
        name, static_cast<double>(trips.count) / static_cast<double>(records), most,
        trips.delayedSeconds);
}

}  // namespace

void PrintRatios(const std::string& tool, std::int64_t records, const std::string& server) {
    RatioBench bench(tool, records);
    for (int round = 0; round < kRounds; ++round) {
        bench.RunRound();
    }
    bench.PrintFiles();
    if (server.empty()) {
        return;
    }
    for (int round = 0; round < kRounds; ++round) {
        bench.RunServerRound(server);
    }
    bench.PrintServer();
    const RoundTripsOfLoads trips = bench.CountRoundTrips(server);
    for (std::size_t kind = 0; kind < kKindNames.size(); ++kind) {
        PrintRoundTrips(kKindNames.at(kind), trips.loads.at(kind), records, kMostRoundTrips);
        fmt::print(" (at most +{})\n", kMostDelay);
    }
    PrintRoundTrips("attachment", trips.attachments, bench.Data().Packets().attachments.records,
                    kMostRoundTripsOfAttachment);
    fmt::print("\n");
}

void PrintServerSeconds(const std::string& tool, std::int64_t records, const std::string& server) {
    const BenchData data(records);
    ServerDatabases databases(tool, server, data.Folder(), 0);
    RunTrackerLoads(databases, data.Packets(),
                    [](Kind, const std::string&, const std::function<Run()>& load) {
                        fmt::print("{:.3f}\n", load().seconds);
                    });
}

}  // namespace bench
