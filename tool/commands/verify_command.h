#ifndef TOOL_COMMANDS_VERIFY_COMMAND_H
#define TOOL_COMMANDS_VERIFY_COMMAND_H

#include <ostream>

#include "tool/verify/sinks/verify_options.h"

namespace tool {

// Compares sources with a database and shows the outcome: on `err` progress and differences, on
// `out` the numbers and the verdict. Returns the exit code: 0 only when nothing differs. Throws
// UsageError, SourceError, DatabaseError, sql::Error and std::system_error, when nothing can be
// compared.
int RunVerify(const VerifyOptions& options, std::ostream& out, std::ostream& err);

}  // namespace tool

#endif
