#ifndef RECORDDB_INTEGRITY_DUPLICATE_SCAN_H
#define RECORDDB_INTEGRITY_DUPLICATE_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks all duplicate marks: that they are between two records of one type with states, that their
// times are valid, and that none leads back to where it began.
void ScanDuplicates(CheckContext& context);

}  // namespace recorddb

#endif
