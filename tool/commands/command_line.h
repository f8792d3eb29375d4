#ifndef TOOL_COMMANDS_COMMAND_LINE_H
#define TOOL_COMMANDS_COMMAND_LINE_H

#include <ostream>

namespace tool {

// Reads the command line and runs its command. Returns the process's exit code; what ends a command
// early is thrown.
int RunCommandLine(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace tool

#endif
