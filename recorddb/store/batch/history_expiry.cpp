#include "recorddb/store/batch/history_expiry.h"

#include <algorithm>
#include <tuple>

namespace recorddb {

void WorkOutExpiry(std::vector<HistoryTimes>& entries) {
    std::sort(entries.begin(), entries.end(), [](const HistoryTimes& a, const HistoryTimes& b) {
        return std::tie(a.actionTime, a.entry) < std::tie(b.actionTime, b.entry);
    });
    for (auto current = entries.begin(); current != entries.end(); ++current) {
        const auto next = current + 1;
        const auto begins = [](const HistoryTimes& entry, const std::string& time) {
            return entry.actionTime < time;
        };
        const auto at = std::lower_bound(next, entries.end(), current->expiryTime, begins);
        const bool wasWorkedOut = at != entries.end() && at->actionTime == current->expiryTime;
        if (next != entries.end() && (current->expiryTime.empty() || wasWorkedOut)) {
            current->expiryTime = next->actionTime;
        }
    }
}

std::vector<HistoryTimes> ChangedTimes(const std::vector<HistoryTimes>& before,
                                       const std::vector<HistoryTimes>& after) {
    std::vector<HistoryTimes> changed;
    for (const HistoryTimes& old : before) {
        const auto now =
            std::find_if(after.begin(), after.end(),
                         [&old](const HistoryTimes& times) { return times.entry == old.entry; });
        if (*now != old) {
            changed.push_back(*now);
        }
    }
    return changed;
}

}  // namespace recorddb
