#ifndef TOOL_SOURCES_KIND_MAP_FINDINGS_H
#define TOOL_SOURCES_KIND_MAP_FINDINGS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

// How serious a finding is.
enum class FindingWeight {
    Count,  // a number that people want to know
    Note,   // something to look at, by which nothing is lost
    Loss    // values of the sources that are lost although the map does not say so
};

// The word for it in reports that programs read.
constexpr std::string_view FindingWeightName(FindingWeight weight) {
    switch (weight) {
        case FindingWeight::Count:
            return "count";
        case FindingWeight::Note:
            return "note";
        default:
            return "loss";
    }
}

// What the reading of sources through a map has found, about one thing.
struct MapFinding {
    FindingWeight weight = FindingWeight::Note;
    std::string kind;         // a word for programs: "unread-address"
    std::string place;        // the first one; empty when there is none
    std::uint64_t count = 0;  // of values, rows or files
    std::string text;         // for people, in one line
    std::string paste;        // lines that can be pasted into the map; mostly empty
};

struct MapFindings {
    std::vector<MapFinding> all;
    std::uint64_t ignored = 0;  // values that the map leaves out on purpose
};

}  // namespace tool

#endif
