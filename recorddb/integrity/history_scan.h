#ifndef RECORDDB_INTEGRITY_HISTORY_SCAN_H
#define RECORDDB_INTEGRITY_HISTORY_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks all history entries: that they belong to a record and stand in the history field of its
// type, that they count from 1 in each record, that their times are valid, and that their expiry is
// the one that follows from the times of all entries. Takes the memory of one record's times.
void ScanHistory(CheckContext& context);

}  // namespace recorddb

#endif
