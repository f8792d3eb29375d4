#ifndef TOOL_PROCESS_EXIT_CODE_H
#define TOOL_PROCESS_EXIT_CODE_H

namespace tool {

// What the process tells its caller. Scripts rely on the numbers.
enum class ExitCode {
    // Everything was imported, or would be; all of it is there.
    Success = 0,
    // Some records were rejected, or would be; something would be lost, or differs.
    Incomplete = 1,
    // Bad usage, schema or source.
    BadInput = 2,
    // The record database failed, there was not enough memory, an output could not be written.
    DatabaseFailed = 3,
};

}  // namespace tool

#endif
