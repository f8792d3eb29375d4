// Times loads into a server with several numbers of workers:
// scripts/private-server build/bench/bin/worker_bench ZTIMPORT [RECORDS [ROUNDS]], by default 10000
// and 3. Each round runs every number once, without delay and with a millisecond for each round
// trip, and what is printed is the middle of the rounds.

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <functional>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "bench_data.h"
#include "databases.h"
#include "delayed_server.h"
#include "server_proxy.h"
#include "server_time.h"
#include "spread.h"
#include "tracker_loads.h"

namespace bench {

namespace {

constexpr std::int64_t kRecords = 10'000;
constexpr int kRounds = 3;
constexpr std::array<std::size_t, 3> kWorkers = {1, 2, 4};
constexpr std::chrono::milliseconds kDelay(1);

// Of one kind of load, by number of workers.
using Runs = std::map<std::size_t, std::vector<Run>>;

Run TypicalOf(const std::vector<Run>& runs) {
    const auto middle = [&runs](double Run::*figure) {
        std::vector<double> values;
        for (const Run& run : runs) {
            values.push_back(run.*figure);
        }
        return SpreadOf(values).median;
    };
    return {.seconds = middle(&Run::seconds),
            .processorSeconds = middle(&Run::processorSeconds),
            .serverSeconds = middle(&Run::serverSeconds)};
}

void Print(const EachKind<Runs>& runs, std::int64_t records) {
    fmt::print("{:8} {:>8} {:>10} {:>10} {:>10} {:>9} {:>8}\n", "load", "workers", "us/record",
               "load CPU", "server CPU", "CPU used", "of one");
    const double processors = std::max(1U, std::thread::hardware_concurrency());
    for (std::size_t kind = 0; kind < runs.size(); ++kind) {
        const double one = TypicalOf(runs[kind].at(1)).seconds;
        for (const auto& [workers, some] : runs[kind]) {
            const Run run = TypicalOf(some).PerRecord(records);
            fmt::print("{:8} {:>8} {:>10.1f} {:>10.1f} {:>10.1f} {:>8.0f}% {:>7.2f}x\n",
                       kKindNames[kind], workers, run.seconds * 1e6, run.processorSeconds * 1e6,
                       run.serverSeconds * 1e6,
                       100 * (run.processorSeconds + run.serverSeconds) / run.seconds / processors,
                       run.seconds * static_cast<double>(records) / one);
        }
    }
}

void Time(const std::string& tool, const std::string& url, pid_t server, const BenchData& data,
          int rounds) {
    EachKind<Runs> runs;
    for (int round = 0; round < rounds; ++round) {
        for (const std::size_t workers : kWorkers) {
            ServerDatabases databases(tool, url, data.Folder(), server, workers);
            RunTrackerLoads(
                databases, data.Packets(),
                [&](Kind kind, const std::string& /*database*/, const std::function<Run()>& load) {
                    Of(runs, kind)[workers].push_back(load());
                });
        }
    }
    Print(runs, data.Records());
}

int Main(const std::vector<std::string>& arguments) {
    const char* const url = std::getenv("ZT_TEST_SERVER");
    if (arguments.empty() || url == nullptr) {
        fmt::print(stderr,
                   "usage: scripts/private-server worker_bench ZTIMPORT [RECORDS [ROUNDS]]\n");
        return 2;
    }
    const std::int64_t records = arguments.size() > 1 ? std::stoll(arguments[1]) : kRecords;
    const int rounds = arguments.size() > 2 ? std::stoi(arguments[2]) : kRounds;
    const BenchData data(records);
    const std::filesystem::path socket = SocketFolderOf(url);
    const pid_t server = ServerBehind(socket);
    fmt::print("{} records\n\nwithout delay\n", records);
    Time(arguments[0], url, server, data, rounds);
    fmt::print("\n1 ms for each round trip\n");
    const DelayedServer delayed(socket, data.Folder(), kDelay);
    Time(arguments[0], UrlWithSocketIn(url, data.Folder()), server, data, rounds);
    return 0;
}

}  // namespace

}  // namespace bench

int main(int argc, char** argv) {
    try {
        return bench::Main(std::vector<std::string>(argv + 1, argv + argc));
    } catch (const std::exception& error) {
        fmt::print(stderr, "worker_bench: {}\n", error.what());
        return 1;
    }
}
