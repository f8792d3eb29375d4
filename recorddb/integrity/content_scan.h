#ifndef RECORDDB_INTEGRITY_CONTENT_SCAN_H
#define RECORDDB_INTEGRITY_CONTENT_SCAN_H

#include <cstdint>

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// What a scan of contents found beside faults.
struct ContentTotals {
    std::uint64_t unused = 0;       // contents that no attachment has
    std::uint64_t unusedBytes = 0;  // in them
    std::uint64_t faults = 0;
};

// Checks all contents, each once, in the memory of a chunk: that their chunks count from 0, that
// they have the SHA-256 that they stand under and the size that attachments say. Contents that no
// attachment has are not a fault; they only take room.
ContentTotals ScanContents(CheckContext& context);

}  // namespace recorddb

#endif
