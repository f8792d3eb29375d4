#ifndef TOOL_LOAD_EXISTING_VALUES_H
#define TOOL_LOAD_EXISTING_VALUES_H

#include <memory>
#include <string>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/losses/key_losses.h"

namespace tool {

// For the search for losses: whether there is a record with a value. The database outlives what is
// returned.
inline KeyLosses::Exists ExistsIn(recorddb::Database& database) {
    const auto reader = std::make_shared<recorddb::RecordReader>(database);
    return [&database, reader](const recorddb::schema::RecordType& type,
                               const recorddb::schema::Field& field, const std::string& value) {
        database.EnsureSearchIndex(type, field);
        return !reader->FindByValue(type, field, value, 1).empty();
    };
}

}  // namespace tool

#endif
