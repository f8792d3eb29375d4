#ifndef TOOL_COMMANDS_LOAD_COMMAND_H
#define TOOL_COMMANDS_LOAD_COMMAND_H

#include <ostream>

#include "tool/load/policy/load_options.h"

namespace tool {

// Imports the sources into the database. Returns the process's exit code: that of ExitCode, or 128
// and the signal's number when a signal ended the load early. Throws what main turns into an error.
int RunLoad(const LoadOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool

#endif
