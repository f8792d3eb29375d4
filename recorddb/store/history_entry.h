#ifndef RECORDDB_STORE_HISTORY_ENTRY_H
#define RECORDDB_STORE_HISTORY_ENTRY_H

#include <cstdint>
#include <string>

namespace recorddb {

// One entry of a record's history. Texts in UTF-8, times as 'YYYY-MM-DD HH:MM:SS', UTC.
struct HistoryEntry {
    std::int64_t recordType = 0;
    std::int64_t record = 0;
    std::int64_t entry = 0;  // counts from 1 in each record, in the order of arrival
    std::string actionTime;
    std::string expiryTime;  // empty: not expired
    std::string userName;
    std::string actionName;
    std::string oldState;
    std::string newState;
    std::string comments;
};

}  // namespace recorddb

#endif
