#ifndef RECORDDB_INTEGRITY_OWN_TABLE_SCAN_H
#define RECORDDB_INTEGRITY_OWN_TABLE_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks the tables that say what a database is: its format and the names of its record types.
void ScanSchemaTables(CheckContext& context);

// Checks the journal: hashes, numbers, and that it counts as many rejected records as it lists.
void ScanJournal(CheckContext& context);

}  // namespace recorddb

#endif
