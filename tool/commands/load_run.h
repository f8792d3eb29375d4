#ifndef TOOL_COMMANDS_LOAD_RUN_H
#define TOOL_COMMANDS_LOAD_RUN_H

#include <cstdint>
#include <filesystem>
#include <memory>
#include <ostream>
#include <string>

#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/sinks/load_sink.h"

namespace tool {

// In what the commands `load` and `check` differ.
struct LoadKind {
    std::string command;  // its name
    const LoadPolicy& policy;
    // Make the sinks that the command reports through: on the terminal (with the size of all
    // sources, and the streams for the result and for everything else), and as JSON.
    std::unique_ptr<LoadSink> (*openTerminal)(const LoadOptions& options, std::uint64_t totalBytes,
                                              std::ostream& out, std::ostream& err);
    std::unique_ptr<LoadSink> (*openReport)(const std::filesystem::path& path);
};

// Runs such a command. Returns the process's exit code: that of ExitCode, or 128 and the signal's
// number when a signal ended it early. Throws what main turns into an error.
int RunLoadOfKind(const LoadKind& kind, const LoadOptions& options, std::ostream& out,
                  std::ostream& err);

}  // namespace tool

#endif
