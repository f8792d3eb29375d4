#include "growth.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <vector>

#include "bench_data.h"
#include "creation_floor.h"
#include "server_proxy.h"
#include "server_time.h"
#include "spread.h"
#include "tracker_loads.h"

namespace bench {

namespace {

constexpr int kGrowthRounds = 3;

// What each record costs in a small load before a large one, in that one, and in a small one after
// it. The mean of the small ones is what one at the time of the large one would have cost.
class Growth {
  public:
    void Add(const Run& before, const Run& many, const Run& after) {
        const Run few = {.seconds = (before.seconds + after.seconds) / 2,
                         .processorSeconds = (before.processorSeconds + after.processorSeconds) / 2,
                         .serverSeconds = (before.serverSeconds + after.serverSeconds) / 2,
                         .peakKilobytes = std::max(before.peakKilobytes, after.peakKilobytes)};
        m_few.Add(few, few);
        m_many.Add(few, many);
    }

    void Print(const std::string& name, std::string_view note) const {
        const Run few = m_few.Typical();
        const Run many = m_many.Typical();
        fmt::print("  {:<16} {:8.1f} {:8.1f}   {}   {}   {:6.1f} {:6.1f} MB{}\n", name,
                   few.seconds * 1e6, many.seconds * 1e6, Percent(m_many.OnTheClock()),
                   Percent(m_many.OfProcessors()), static_cast<double>(few.peakKilobytes) / 1024,
                   static_cast<double>(many.peakKilobytes) / 1024, note);
    }

  private:
    static std::string Percent(const Spread& spread) {
        const auto more = [](double ratio) { return (ratio - 1) * 100; };
        return fmt::format("{:+6.1f} % ({:+.1f} to {:+.1f})", more(spread.median),
                           more(spread.lowest), more(spread.highest));
    }

    Pairs m_few;
    Pairs m_many;
};

EachKind<Run> LoadsPerRecord(Databases& databases, const BenchData& data) {
    EachKind<Run> costs;
    RunTrackerLoads(databases, data.Packets(),
                    [&](Kind kind, const std::string&, const std::function<Run()>& load) {
                        Of(costs, kind) = load().PerRecord(data.Records());
                    });
    return costs;
}

EachKind<Run> FloorPerRecord(Databases& databases, const BenchData& data) {
    return {WriteFloor(databases.New("floor"), data.Records()).PerRecord(data.Records())};
}

class GrowthBench {
  public:
    GrowthBench(std::int64_t few, std::int64_t many) : m_few(few), m_many(many) {}

    void Run(const std::string& tool, const std::string& server) {
        fmt::print(
            "a record among {} and among {}: microseconds on the clock; growth on the clock "
            "and of all processor time, median of {} (lowest to highest); largest memory, of which "
            "32 MiB are the engine's cache of pages: full from some 30,000 records, level from "
            "there\n",
            m_few.Records(), m_many.Records(), kGrowthRounds);
        for (int round = 0; round < kGrowthRounds; ++round) {
            AddRound(m_floor, FloorPerRecord, tool, "");
            AddRound(m_files, LoadsPerRecord, tool, "");
            if (!server.empty()) {
                AddRound(m_server, LoadsPerRecord, tool, server);
            }
        }
        m_floor[0].Print("floor", "");
        PrintLoads(m_files, "");
        if (!server.empty()) {
            PrintLoads(m_server, "server: ");
        }
    }

  private:
    using Costs = EachKind<bench::Run> (*)(Databases&, const BenchData&);

    static std::unique_ptr<Databases> DatabasesOf(const BenchData& data, const std::string& tool,
                                                  const std::string& server) {
        if (server.empty()) {
            return std::make_unique<DatabaseFiles>(tool, data.Folder());
        }
        return std::make_unique<ServerDatabases>(tool, server, data.Folder(),
                                                 ServerBehind(SocketFolderOf(server)));
    }

    void AddRound(EachKind<Growth>& growth, Costs costs, const std::string& tool,
                  const std::string& server) {
        const auto few = DatabasesOf(m_few, tool, server);
        const auto many = DatabasesOf(m_many, tool, server);
        const EachKind<bench::Run> before = costs(*few, m_few);
        const EachKind<bench::Run> large = costs(*many, m_many);
        const EachKind<bench::Run> after = costs(*few, m_few);
        for (std::size_t kind = 0; kind < growth.size(); ++kind) {
            growth.at(kind).Add(before.at(kind), large.at(kind), after.at(kind));
        }
    }

    static void PrintLoads(const EachKind<Growth>& growth, const std::string& where) {
        for (std::size_t kind = 0; kind < growth.size(); ++kind) {
            growth.at(kind).Print(where + kKindNames.at(kind), "  (at most +15 %)");
        }
    }

    BenchData m_few;
    BenchData m_many;
    EachKind<Growth> m_floor;
    EachKind<Growth> m_files;
    EachKind<Growth> m_server;
};

}  // namespace

void PrintGrowth(const std::string& tool, std::int64_t few, std::int64_t many,
                 const std::string& server) {
    GrowthBench(few, many).Run(tool, server);
}

}  // namespace bench
