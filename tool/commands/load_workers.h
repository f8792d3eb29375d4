#ifndef TOOL_COMMANDS_LOAD_WORKERS_H
#define TOOL_COMMANDS_LOAD_WORKERS_H

#include <cstddef>

#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"

namespace tool {

// The most workers that can be asked for.
constexpr std::size_t kMostWorkers = 64;

// The number of workers that was asked for, or else one that suits the machine and the load. Throws
// UsageError when more than one was asked for and this load can have one only.
std::size_t WorkersFor(const LoadOptions& options, const LoadPolicy& policy);

}  // namespace tool

#endif
