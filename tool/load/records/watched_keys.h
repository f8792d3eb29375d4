#ifndef TOOL_LOAD_RECORDS_WATCHED_KEYS_H
#define TOOL_LOAD_RECORDS_WATCHED_KEYS_H

#include <vector>

#include "recorddb/schema.h"

namespace tool {

// A kind of value that records of a type can be found by: of a field, or with null their unique
// key.
struct WatchedKey {
    const recorddb::schema::RecordType* type = nullptr;
    const recorddb::schema::Field* field = nullptr;

    bool operator==(const WatchedKey&) const = default;
};

using WatchedKeys = std::vector<WatchedKey>;

}  // namespace tool

#endif
