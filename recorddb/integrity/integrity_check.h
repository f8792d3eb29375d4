#ifndef RECORDDB_INTEGRITY_INTEGRITY_CHECK_H
#define RECORDDB_INTEGRITY_INTEGRITY_CHECK_H

#include <cstdint>
#include <functional>

#include "recorddb/database.h"
#include "recorddb/integrity/fault.h"

namespace recorddb {

// How a check came out, beside the faults that were told.
struct IntegrityTotals {
    std::uint64_t records = 0;         // of all types
    std::uint64_t faults = 0;          // that were told
    std::uint64_t unusedContents = 0;  // that no attachment has, which is no fault
    std::uint64_t unusedBytes = 0;     // in them
    bool allContentsSound = false;     // all are what their SHA-256 says, and none is missing
};

// Goes once through every table of a database and tells what breaks the database's own rules: how
// values are stored, what the schema asks of them, display ids, expiry times, positions, references
// and marks that lead nowhere, contents, what is left of records that are gone, the journal. Takes
// the memory of one record with its history and lists, and time that grows with the rows.
//
// TAKE gets the faults; KEEPON is asked at every row, with the number of records checked so far,
// and ends the check when it returns false, the totals then being of no use. Throws sql::Error; who
// needs all of one moment holds a transaction.
IntegrityTotals CheckIntegrity(Database& database, const TakeFault& take,
                               const std::function<bool(std::uint64_t)>& keepOn);

}  // namespace recorddb

#endif
