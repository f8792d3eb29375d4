#ifndef BENCH_TRACKER_LOADS_H
#define BENCH_TRACKER_LOADS_H

#include <array>
#include <cstddef>
#include <functional>
#include <string>

#include "databases.h"
#include "generated_tracker.h"

namespace bench {

// The kinds of load that have limits, in the order in which they are run.
enum class Kind : std::size_t { Create, Update, History };

inline constexpr std::array<const char*, 3> kKindNames = {"create", "update", "history"};

// One value for each kind.
template <typename Value>
using EachKind = std::array<Value, kKindNames.size()>;

template <typename Value>
Value& Of(EachKind<Value>& values, Kind kind) {
    return values.at(static_cast<std::size_t>(kind));
}

// Runs the tool's `command` ("load", "check", "verify") with a database and packets.
Run RunOn(Databases& databases, const char* command, const std::string& database,
          const PacketFiles& packets);

// A new database that holds the keywords.
std::string NewTracker(Databases& databases, const std::string& use, const TrackerPackets& packets);

// Makes databases that hold what comes before each kind of load, and calls `note` for each kind
// with its database and what runs the load.
using NoteLoad =
    std::function<void(Kind, const std::string& database, const std::function<Run()>& load)>;
void RunTrackerLoads(Databases& databases, const TrackerPackets& packets, const NoteLoad& note);

}  // namespace bench

#endif
