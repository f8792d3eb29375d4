#ifndef TOOL_COMMANDS_CHECK_COMMAND_H
#define TOOL_COMMANDS_CHECK_COMMAND_H

#include <ostream>

#include "tool/load/policy/load_options.h"

namespace tool {

// Rehearses the load of the sources and undoes it, and finds what the load would drop silently.
// Returns the process's exit code: ExitCode::Incomplete when something would be rejected or lost,
// or 128 and the signal's number when a signal ended it early. Throws what main turns into an
// error. The database is as it was before in any case.
int RunCheck(const LoadOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool

#endif
