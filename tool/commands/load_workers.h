#ifndef TOOL_COMMANDS_LOAD_WORKERS_H
#define TOOL_COMMANDS_LOAD_WORKERS_H

#include <cstddef>

#include "tool/load/load_options.h"

namespace tool {

// As many as can be asked for.
constexpr std::size_t kMostWorkers = 64;

// Throws UsageError when more than one worker was asked for, and that cannot be.
void CheckWorkers(const LoadOptions& options);

}  // namespace tool

#endif
