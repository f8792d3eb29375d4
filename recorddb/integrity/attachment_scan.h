#ifndef RECORDDB_INTEGRITY_ATTACHMENT_SCAN_H
#define RECORDDB_INTEGRITY_ATTACHMENT_SCAN_H

#include <cstdint>

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks all attachments: that they belong to a record and one of its type's attachments fields,
// that they have a name, and that their content is there. Returns the number of faults that are
// about contents.
std::uint64_t ScanAttachments(CheckContext& context);

}  // namespace recorddb

#endif
