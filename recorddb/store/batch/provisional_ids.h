#ifndef RECORDDB_STORE_BATCH_PROVISIONAL_IDS_H
#define RECORDDB_STORE_BATCH_PROVISIONAL_IDS_H

#include <cstdint>
#include <optional>
#include <vector>

#include "recorddb/schema.h"
#include "recorddb/store/batch/pending_changes.h"

namespace recorddb {

// New records that are gathered ahead of their turn have numbers from here on instead of dbids:
// those are given out in turn. No database comes near these by counting.
constexpr std::int64_t kFirstProvisionalId = std::int64_t{1} << 62U;

constexpr bool IsProvisional(std::int64_t dbid) {
    return dbid >= kFirstProvisionalId;
}

// Gives new records their dbids, and with them their display ids, wherever the changes speak of
// them: the first provisional number of a type becomes the dbid after `highest`, and so on; by
// type, none for those without new records. False when that cannot be done; then the changes are of
// no use any more. `schema` outlives the changes.
bool GiveDbIds(PendingChanges& changes, const schema::Schema& schema,
               const std::vector<std::optional<std::int64_t>>& highest);

}  // namespace recorddb

#endif
