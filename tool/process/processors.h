#ifndef TOOL_PROCESS_PROCESSORS_H
#define TOOL_PROCESS_PROCESSORS_H

#include <cstddef>

namespace tool {

// How many workers are of use by default: as many as there are processors that the process may run
// on, up to this many.
constexpr std::size_t kMostWorkersByDefault = 8;
std::size_t WorkersByDefault();

}  // namespace tool

#endif
