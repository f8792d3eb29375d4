#ifndef TOOL_COMMANDS_LOAD_WORKERS_H
#define TOOL_COMMANDS_LOAD_WORKERS_H

#include <cstddef>

#include "tool/load/load_options.h"
#include "tool/load/load_policy.h"

namespace tool {

// As many as can be asked for.
constexpr std::size_t kMostWorkers = 64;

// As many as were asked for, or as suit the machine and the load. Throws UsageError when more than
// one was asked for, and that cannot be.
std::size_t WorkersFor(const LoadOptions& options, const LoadPolicy& policy);

}  // namespace tool

#endif
