#include "tracker_loads.h"

namespace bench {

Run RunOn(Databases& databases, const char* command, const std::string& database,
          const PacketFiles& packets) {
    std::vector<std::string> arguments = {command, "--quiet", database};
    if (!packets.attachments.empty()) {
        arguments.insert(arguments.end(), {"--attachments", packets.attachments});
    }
    arguments.insert(arguments.end(), packets.sources.begin(), packets.sources.end());
    return databases.RunTool(arguments);
}

std::string NewTracker(Databases& databases, const std::string& use,
                       const TrackerPackets& packets) {
    std::string database = databases.New(use);
    RunOn(databases, "load", database, packets.keywords);
    return database;
}

void RunTrackerLoads(Databases& databases, const TrackerPackets& packets, const NoteLoad& note) {
    const auto timed = [&](Kind kind, const std::string& database, const PacketFiles& files) {
        note(kind, database, [&] { return RunOn(databases, "load", database, files); });
    };
    const std::string tracker = NewTracker(databases, "load", packets);
    timed(Kind::Create, tracker, packets.create);
    timed(Kind::Update, tracker, packets.update);
    const std::string bare = NewTracker(databases, "bare", packets);
    RunOn(databases, "load", bare, packets.bare);
    timed(Kind::History, bare, packets.history);
}

}  // namespace bench
