#ifndef BENCH_RATIOS_H
#define BENCH_RATIOS_H

#include <cstdint>
#include <string>

namespace bench {

// Prints what loads of `records` records take against a floor that writes the same rows by SQLite's
// own interface: into files, by a short script, by maps, and into a server where `server` is the
// URL of one; and what check and verify take against the load. Each is paired with a run of what it
// is compared with. Throws std::runtime_error.
void PrintRatios(const std::string& tool, std::int64_t records, const std::string& server);

// Prints the seconds of one load of each kind into a server, one number a line.
void PrintServerSeconds(const std::string& tool, std::int64_t records, const std::string& server);

}  // namespace bench

#endif
