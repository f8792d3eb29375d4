#ifndef TOOL_LOAD_SINKS_LOAD_TOTALS_H
#define TOOL_LOAD_SINKS_LOAD_TOTALS_H

#include <cstdint>

namespace tool {

// What a load has done, in numbers.
struct LoadTotals {
    std::uint64_t read = 0;         // records found in the sources
    std::uint64_t created = 0;      // records made
    std::uint64_t updated = 0;      // records changed
    std::uint64_t rejected = 0;     // records refused
    std::uint64_t skipped = 0;      // records loaded before, or passed over by the importer
    std::uint64_t history = 0;      // history entries written
    std::uint64_t attachments = 0;  // attachments stored
    std::uint64_t duplicates = 0;   // duplicate marks set
    double seconds = 0;             // time it took
    std::uint64_t retried = 0;      // groups of records done again after a failure that passed
    std::uint64_t waited = 0;       // records put off, since they waited for others
    std::uint64_t workers = 0;      // that were to work ahead
    std::uint64_t ahead = 0;        // groups of records that they had done when their turn came
    std::uint64_t inTurn = 0;       // the other groups
};

// Adds the numbers of another load; the time is left alone.
void Add(LoadTotals& totals, const LoadTotals& more);

}  // namespace tool

#endif
