#ifndef RECORDDB_STORE_HISTORY_EXPIRY_H
#define RECORDDB_STORE_HISTORY_EXPIRY_H

#include <cstdint>
#include <string>
#include <vector>

namespace recorddb {

// The times of a history entry: when it was and until when it stands.
struct HistoryTimes {
    std::int64_t entry = 0;
    std::string actionTime;
    std::string expiryTime;  // empty: none

    bool operator==(const HistoryTimes&) const = default;
};

// Puts the entries of one record in the order of their action times, those of one time in the order
// of arrival, and works out their expiry: an entry expires when the next one begins, the last one
// does not. An expiry time that was given with an entry stands. It is told from one worked out
// earlier by being no later entry's action time.
void WorkOutExpiry(std::vector<HistoryTimes>& entries);

// Of the entries in `before`, all of which are in `after` as well, those that are not the same
// there, as they are there.
std::vector<HistoryTimes> ChangedTimes(const std::vector<HistoryTimes>& before,
                                       const std::vector<HistoryTimes>& after);

}  // namespace recorddb

#endif
