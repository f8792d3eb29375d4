#ifndef RECORDDB_INTEGRITY_H
#define RECORDDB_INTEGRITY_H

#include <cstdint>
#include <functional>
#include <string>

#include "recorddb/export.h"

namespace recorddb {

class Database;

// Something in a database that breaks the database's own rules. What is written through this
// library never does. Texts are in UTF-8, except values, which are given as they are stored.
struct Fault {
    std::string type;     // a record type, or one of the database's own tables
    std::string id;       // the record as people call it; in own tables what identifies the row
    std::string field;    // field and part of it; empty when it is the record or row as a whole
    std::string value;    // what is stored there; empty: nothing, or not to be shown
    std::string problem;  // what is wrong, for people
};

using TakeFault = std::function<void(const Fault&)>;

// The result of a check, besides the faults that it reported.
struct IntegrityTotals {
    std::uint64_t records = 0;         // of all types
    std::uint64_t faults = 0;          // that were reported
    std::uint64_t unusedContents = 0;  // that no attachment has, which is no fault
    std::uint64_t unusedBytes = 0;     // in them
    bool allContentsSound = false;     // all are what their SHA-256 says, and none is missing
};

// Goes once through every table of a database and reports what breaks the database's own rules: how
// values are stored, what the schema asks of them, display ids, expiry times, positions, references
// and marks that lead nowhere, contents, what is left of records that are gone, the journal. Takes
// the memory of one record with its history and lists, and time that grows with the rows.
//
// `take` gets the faults; `keepOn` is called at every row with the number of records checked so
// far; when it returns false, the check ends and the totals are incomplete. Throws sql::Error. To
// check the state of one moment, hold a transaction.
RECORDDB_API IntegrityTotals CheckIntegrity(Database& database, const TakeFault& take,
                                            const std::function<bool(std::uint64_t)>& keepOn);

}  // namespace recorddb

#endif
