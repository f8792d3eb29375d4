#ifndef BENCH_ROUND_TRIPS_H
#define BENCH_ROUND_TRIPS_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "generated_tracker.h"
#include "tracker_loads.h"

namespace bench {

// What a network between a load and its server would cost.
struct RoundTrips {
    std::uint64_t count = 0;    // how often something was asked and the answer waited for
    double delayedSeconds = 0;  // how much longer it takes when each of them takes kDelay longer
};

struct RoundTripsOfLoads {
    EachKind<RoundTrips> loads;
    RoundTrips attachments;
};

// Loads through a proxy in front of the server that `url` names, once without delay and once with.
RoundTripsOfLoads CountRoundTrips(const std::string& tool, const std::string& url,
                                  const std::filesystem::path& folder,
                                  const TrackerPackets& packets);

}  // namespace bench

#endif
