#ifndef RECORDDB_KEYS_H
#define RECORDDB_KEYS_H

#include <cstdint>
#include <functional>

namespace recorddb {

// What the search for the record with a given key has found.
struct KeyMatch {
    std::int64_t dbid = 0;   // of the one record; 0 when there is none
    bool several = false;    // the text can be read as the keys of different records
    bool undecided = false;  // the search was given up
};

inline constexpr std::int64_t kDefaultMaxReferenceTries = 10'000;

// When the search for one key is given up.
struct KeySearchLimits {
    std::int64_t maxTries = kDefaultMaxReferenceTries;
    std::function<bool()> stopRequested;  // asked at every try; may be empty
};

}  // namespace recorddb

#endif
