#ifndef RECORDDB_INTEGRITY_H
#define RECORDDB_INTEGRITY_H

#include <cstdint>
#include <functional>
#include <string>

#include "recorddb/export.h"

namespace recorddb {

class Database;

// Something in a database that breaks its own rules, which nothing that writes through this library
// leaves behind. Texts in UTF-8, but for values, which are as they are stored.
struct Fault {
    std::string type;     // a record type, or one of the database's own tables
    std::string id;       // the record as people call it; in own tables what tells the row
    std::string field;    // field and part of it; empty when it is the record or row as a whole
    std::string value;    // what stands there; empty: nothing, or not to be shown
    std::string problem;  // what is wrong, for people
};

using TakeFault = std::function<void(const Fault&)>;

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
// `take` gets the faults; `keepOn` is asked at every row, with the number of records checked so
// far, and ends the check when it returns false, the totals then being of no use. Throws
// sql::Error; who needs all of one moment holds a transaction.
RECORDDB_API IntegrityTotals CheckIntegrity(Database& database, const TakeFault& take,
                                            const std::function<bool(std::uint64_t)>& keepOn);

}  // namespace recorddb

#endif
