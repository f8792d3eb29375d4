#ifndef RECORDDB_EDITING_HISTORY_READING_H
#define RECORDDB_EDITING_HISTORY_READING_H

#include "platform/core/adhistory.h"
#include "platform/messages/pamessage.h"
#include "recorddb/record.h"

namespace recorddb {

// Reads an entry as the core hands it over; `number` counts the entries of the call from 1. A text
// without a terminator was too long for its room. Returns a message with id 0, or the one that
// refuses the entry. `entry` is overwritten; when it is used again and again, so is the memory of
// its texts.
PaMessage ReadHistoryEntry(const AdHistory& given, long number, HistoryEntry& entry);

}  // namespace recorddb

#endif
