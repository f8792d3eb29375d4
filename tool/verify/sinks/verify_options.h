#ifndef TOOL_VERIFY_SINKS_VERIFY_OPTIONS_H
#define TOOL_VERIFY_SINKS_VERIFY_OPTIONS_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "recorddb/session_options.h"
#include "tool/packet/record_limits.h"

namespace tool {

// What `ztimport verify` was asked to do.
struct VerifyOptions {
    std::string database;
    std::vector<std::string> sources;
    std::string map;                    // file; empty: the sources are packets
    std::filesystem::path attachments;  // folder; empty for none
    std::int64_t maxAttachmentSize = recorddb::kDefaultMaxAttachmentSize;
    std::int64_t maxReferenceTries = recorddb::kDefaultMaxReferenceTries;
    std::filesystem::path report;  // file; empty for none
    std::filesystem::path html;    // file; empty for none
    RecordLimits limits;
    bool exact = false;  // what no source speaks of is a difference, too
    bool quiet = false;
    // That compare records. 1: the main thread alone does; 0: as many as suit machine and sources.
    std::size_t workers = 1;
    bool waitsForWorkers = false;  // the main thread leaves all to them; for tests
    bool immutable = false;  // nobody writes to the database, and nothing is written beside it
};

}  // namespace tool

#endif
