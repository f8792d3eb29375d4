#ifndef TOOL_LOAD_POLICY_LOAD_OPTIONS_H
#define TOOL_LOAD_POLICY_LOAD_OPTIONS_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/session_options.h"
#include "tool/packet/record_limits.h"

namespace tool {

constexpr std::chrono::seconds kDefaultRetryFor(60);
constexpr std::size_t kGroupRecords = 100;
constexpr std::size_t kGroupsTogether = 8;

// What `ztimport load` or `ztimport check` was asked to do.
struct LoadOptions {
    std::string database;
    std::vector<std::string> sources;
    std::string map;                     // file; empty: the sources are packets
    std::filesystem::path rejects;       // folder; empty for none
    std::filesystem::path report;        // file; empty for none
    std::filesystem::path rejectedRows;  // file; empty for none
    std::filesystem::path html;          // file; empty for none
    std::filesystem::path attachments;   // folder; empty for none
    std::int64_t maxAttachmentSize = recorddb::kDefaultMaxAttachmentSize;
    std::int64_t maxReferenceTries = recorddb::kDefaultMaxReferenceTries;
    std::filesystem::path trace;  // file; empty for none
    std::optional<std::uint64_t> maxRejects;
    RecordLimits limits;
    // How long a connection to a server that was lost is sought again.
    std::chrono::seconds retryFor = kDefaultRetryFor;
    bool wholePackets = false;
    bool fresh = false;          // ignore the journal
    bool retryRejected = false;  // import what the journal knows as rejected once more
    bool quiet = false;
    // Threads that go through records ahead of their turn. 1: none, the load's own thread does
    // everything; 0, until the command has chosen: as many as suit the machine and the load.
    std::size_t workers = 1;
    std::size_t groupRecords = kGroupRecords;  // done in one transaction; fewer are for tests
    // The most groups done by workers that are written in one transaction; fewer are for tests.
    std::size_t groupsTogether = kGroupsTogether;
    bool looksAhead = false;  // also where it does not pay; for tests
    // For tests that vary the timing: workers call it before each record.
    std::function<void()> beforeWork;
    // Nothing that the workers were given is taken back before they have done it; for tests, which
    // count on that.
    bool waitsForWorkers = false;
};

}  // namespace tool

#endif
