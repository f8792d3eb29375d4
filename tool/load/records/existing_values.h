#ifndef TOOL_LOAD_RECORDS_EXISTING_VALUES_H
#define TOOL_LOAD_RECORDS_EXISTING_VALUES_H

#include <cstdint>
#include <memory>
#include <string>

#include "recorddb/database.h"
#include "recorddb/reader.h"
#include "tool/losses/key_losses.h"
#include "tool/process/interrupt.h"

namespace tool {

// Whether the text is, to the letter, the unique key of a record of the type.
inline bool IsKey(recorddb::RecordReader& reader, const recorddb::schema::RecordType& type,
                  const std::string& text) {
    // A text can be read as a key in more ways than are worth trying for each run of items.
    constexpr std::int64_t mostTries = 100;
    const recorddb::KeySearchLimits limits = {.maxTries = mostTries,
                                              .stopRequested = [] { return Interrupted() != 0; }};
    const recorddb::KeyMatch match = reader.FindKey(type, text, limits);
    return match.dbid != 0 && reader.Key(type, match.dbid) == text;
}

// For the search for losses: the records of the database. It outlives what is returned.
inline KeyLosses::Existing ExistingIn(recorddb::Database& database) {
    const auto reader = std::make_shared<recorddb::RecordReader>(database);
    return {[&database, reader](const recorddb::schema::RecordType& type,
                                const recorddb::schema::Field& field, const std::string& value) {
                database.EnsureSearchIndex(type, field);
                const auto dbids = reader->FindByValue(type, field, value, 1);
                return dbids.empty() ? 0 : dbids.front();
            },
            [&database](const recorddb::schema::RecordType& type, const std::string& key) {
                // A new one each time: a reader remembers records from before their keys changed.
                recorddb::RecordReader anew(database);
                return IsKey(anew, type, key);
            }};
}

}  // namespace tool

#endif
