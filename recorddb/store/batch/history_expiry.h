#ifndef RECORDDB_STORE_BATCH_HISTORY_EXPIRY_H
#define RECORDDB_STORE_BATCH_HISTORY_EXPIRY_H

#include <cstdint>
#include <string>
#include <vector>

namespace recorddb {

// The times of a history entry: from when and until when it holds.
struct HistoryTimes {
    std::int64_t entry = 0;
    std::string actionTime;
    std::string expiryTime;  // empty: none

    bool operator==(const HistoryTimes&) const = default;
};

// Puts the entries of one record in the order of their action times, those of one time in the order
// of arrival, and works out their expiry: an entry expires when the next one begins, the last one
// does not. An expiry time that was given with an entry is kept. It differs from one that was
// worked out earlier in that no later entry has it as its action time.
void WorkOutExpiry(std::vector<HistoryTimes>& entries);

// The entries of `after` that differ from those of the same number in `before`. All entries of
// `before` are in `after` as well.
std::vector<HistoryTimes> ChangedTimes(const std::vector<HistoryTimes>& before,
                                       const std::vector<HistoryTimes>& after);

}  // namespace recorddb

#endif
