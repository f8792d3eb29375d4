#ifndef RECORDDB_SESSION_OPTIONS_H
#define RECORDDB_SESSION_OPTIONS_H

#include <cstdint>
#include <string>

#include "recorddb/keys.h"

namespace recorddb {

// In bytes. Trackers take no larger files, and a sparse file that claims terabytes is refused.
inline constexpr std::int64_t kDefaultMaxAttachmentSize = std::int64_t{1} << 30;

struct SessionOptions {
    // The folder below which the files of attachments are found; empty: attachments are refused.
    std::string attachmentsFolder;
    // Larger files are refused; in bytes.
    std::int64_t maxAttachmentSize = kDefaultMaxAttachmentSize;
    // The files of attachments are found and read, but their content is not stored: for work that
    // is to be undone in any case.
    bool examineAttachments = false;
    // When the search for the record that a reference means is given up.
    KeySearchLimits references = {};
};

}  // namespace recorddb

#endif
