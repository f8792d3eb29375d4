#ifndef BENCH_MAPPED_SOURCES_H
#define BENCH_MAPPED_SOURCES_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

// The records of the bare packets as people have them, with the map that makes the same of them.
struct MappedSource {
    std::string name;
    std::filesystem::path file;
    std::filesystem::path map;
    const char* limit;  // what its load has to keep; empty when nothing
};

// Writes them into `folder`: as JSON Lines, as CSV, and as one JSON array.
std::vector<MappedSource> WriteMappedSources(const std::filesystem::path& folder,
                                             std::int64_t records);

}  // namespace bench

#endif
