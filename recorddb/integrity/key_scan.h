#ifndef RECORDDB_INTEGRITY_KEY_SCAN_H
#define RECORDDB_INTEGRITY_KEY_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Whether the tables that only the sharded layout has agree with the records: zt_key names each
// unique value of a spread type for the record that has it, and no other; zt_last_dbid says no less
// than what was given out; zt_turn has its one row. Nothing happens in the plain layout.
void ScanShardedTables(CheckContext& context);

}  // namespace recorddb

#endif
