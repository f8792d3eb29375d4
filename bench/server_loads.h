#ifndef BENCH_SERVER_LOADS_H
#define BENCH_SERVER_LOADS_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "child_run.h"
#include "generated_tracker.h"

namespace bench {

// One kind of load on a server.
struct ServerLoad {
    ChildRun run{1e9, 1e9, 0};
    double delayedSeconds = 0;  // when each round trip takes kDelay longer
    std::uint64_t roundTrips = 0;
};

struct ServerLoads {
    ServerLoad create;
    ServerLoad update;
    ServerLoad history;
};

// Loads into schemas of their own, which stay: `url` is that of a server for nothing else, with the
// folder of its socket as `host`. Schema file and packets are those of the generated tracker. The
// fastest of `runs` runs counts. Throws std::runtime_error.
ServerLoads RunServerLoads(const std::string& tool, const std::string& url,
                           const std::filesystem::path& folder, const TrackerPackets& packets,
                           int runs);

}  // namespace bench

#endif
