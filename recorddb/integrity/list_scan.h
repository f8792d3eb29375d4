#ifndef RECORDDB_INTEGRITY_LIST_SCAN_H
#define RECORDDB_INTEGRITY_LIST_SCAN_H

#include "recorddb/integrity/check_context.h"

namespace recorddb {

// Checks the lists of one reference list field: that they belong to records, that their positions
// count from 0 without a gap, that each target is a record and stands in the list once.
void ScanLists(CheckContext& context, const schema::RecordType& type, const schema::Field& field);

}  // namespace recorddb

#endif
