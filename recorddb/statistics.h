#ifndef RECORDDB_STATISTICS_H
#define RECORDDB_STATISTICS_H

#include <cstdint>

namespace recorddb {

// What a session has done. What is rolled back is subtracted again.
struct Statistics {
    std::int64_t recordsCreated = 0;
    // Commits of existing records on which fields were set, whether or not the values differed.
    std::int64_t recordsUpdated = 0;
    std::int64_t historyEntries = 0;
    std::int64_t attachments = 0;
    // Marks committed, whether or not the same link stood there before.
    std::int64_t duplicateLinks = 0;
    // Commits of records that went through, those that had nothing to write included.
    std::int64_t commits = 0;

    bool operator==(const Statistics&) const = default;
};

inline Statistics operator+(const Statistics& some, const Statistics& more) {
    return {some.recordsCreated + more.recordsCreated, some.recordsUpdated + more.recordsUpdated,
            some.historyEntries + more.historyEntries, some.attachments + more.attachments,
            some.duplicateLinks + more.duplicateLinks, some.commits + more.commits};
}

// What was done between two moments, given what had been done at each.
inline Statistics operator-(const Statistics& later, const Statistics& earlier) {
    return {later.recordsCreated - earlier.recordsCreated,
            later.recordsUpdated - earlier.recordsUpdated,
            later.historyEntries - earlier.historyEntries,
            later.attachments - earlier.attachments,
            later.duplicateLinks - earlier.duplicateLinks,
            later.commits - earlier.commits};
}

}  // namespace recorddb

#endif
