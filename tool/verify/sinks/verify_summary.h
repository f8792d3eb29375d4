#ifndef TOOL_VERIFY_SINKS_VERIFY_SUMMARY_H
#define TOOL_VERIFY_SINKS_VERIFY_SUMMARY_H

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

// How the records of one type came out. A record of the database counts once, however many records
// of the sources speak of it.
struct VerifiedType {
    std::string name;               // empty: records of sources that are of no known type
    std::uint64_t compared = 0;     // records of the database that the sources speak of
    std::uint64_t equal = 0;        // those without a difference
    std::uint64_t different = 0;    // those with one or more
    std::uint64_t missing = 0;      // records of the sources that the database does not have
    std::uint64_t extra = 0;        // records that no source speaks of, where these were looked for
    std::uint64_t fields = 0;       // values compared, those of states included
    std::uint64_t references = 0;   // references compared, those in lists included
    std::uint64_t history = 0;      // history entries of the sources compared
    std::uint64_t attachments = 0;  // attachments of the sources compared
    std::uint64_t duplicates = 0;   // duplicate marks of the sources compared
};

// Adds the numbers of other records of the type.
void Add(VerifiedType& type, const VerifiedType& more);

// How a comparison came out as a whole.
struct VerifySummary {
    std::uint64_t read = 0;      // records found in the sources
    std::uint64_t compared = 0;  // sums over the types
    std::uint64_t differing = 0;
    std::uint64_t missing = 0;
    std::uint64_t extra = 0;
    std::uint64_t differences = 0;     // that were reported, those of no record included
    std::uint64_t faults = 0;          // of the database itself
    std::uint64_t unusedContents = 0;  // contents that no attachment has, which is no fault
    std::uint64_t unusedBytes = 0;     // in them
    bool exact = false;                // what is in no source was looked for
    std::uint64_t leftOut = 0;         // values of the sources that a map leaves out on purpose
    double seconds = 0;                // time it took
    std::vector<VerifiedType> types;

    bool Verified() const { return differences == 0 && faults == 0; }

    // The outcome in one sentence.
    std::string Verdict() const;
};

}  // namespace tool

#endif
