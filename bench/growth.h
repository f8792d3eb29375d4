#ifndef BENCH_GROWTH_H
#define BENCH_GROWTH_H

#include <cstdint>
#include <string>

namespace bench {

// Prints how time and memory of a record grow from `few` records in a load to `many`, in files and
// in a server where `server` is the URL of one. Throws std::runtime_error.
void PrintGrowth(const std::string& tool, std::int64_t few, std::int64_t many,
                 const std::string& server);

}  // namespace bench

#endif
