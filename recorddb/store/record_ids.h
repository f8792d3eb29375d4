#ifndef RECORDDB_STORE_RECORD_IDS_H
#define RECORDDB_STORE_RECORD_IDS_H

#include <cstdint>

#include "recorddb/schema.h"

namespace recorddb::schema {

// Gives new records their dbid, which is the number in the display id as well.
class RecordIds {
  public:
    RecordIds() = default;
    RecordIds(const RecordIds&) = delete;
    RecordIds& operator=(const RecordIds&) = delete;
    virtual ~RecordIds() = default;

    // The dbid for the next record of a type, above all that are in use; the caller inserts the
    // record with it in the transaction under way. When a record has the highest number that there
    // is, the message that says so, as a PaMsgException*.
    virtual std::int64_t Next(const RecordType& type) = 0;
};

}  // namespace recorddb::schema

#endif
