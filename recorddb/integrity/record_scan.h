#ifndef RECORDDB_INTEGRITY_RECORD_SCAN_H
#define RECORDDB_INTEGRITY_RECORD_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks the records of a type one by one: how their values are stored, what the schema asks of
// them, their display ids, and that references lead to a record.
void ScanRecords(CheckContext& context, const schema::RecordType& type);

}  // namespace recorddb

#endif
