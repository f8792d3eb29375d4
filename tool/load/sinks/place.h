#ifndef TOOL_LOAD_SINKS_PLACE_H
#define TOOL_LOAD_SINKS_PLACE_H

#include <cstdint>

namespace tool {

// Where a record stands among all the records of a load: ascending in the order in which they are
// read.
using Place = std::uint64_t;

constexpr int kOrdinalBits = 40;

constexpr Place PlaceOf(std::uint64_t source, std::uint64_t ordinal) {
    return (source << kOrdinalBits) | ordinal;
}
constexpr std::uint64_t SourceOf(Place place) {
    return place >> kOrdinalBits;
}
constexpr std::uint64_t OrdinalOf(Place place) {
    return place & ((Place{1} << kOrdinalBits) - 1);
}

}  // namespace tool

#endif
