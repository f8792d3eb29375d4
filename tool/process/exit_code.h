#ifndef TOOL_PROCESS_EXIT_CODE_H
#define TOOL_PROCESS_EXIT_CODE_H

namespace tool {

// What the process tells its caller. Scripts rely on the numbers.
enum class ExitCode {
    Success = 0,          // everything was imported, or would be
    RecordsRejected = 1,  // some records were rejected, or would be; something would be lost
    RecordsDiffer = 1,    // what is in the sources is not in the database
    BadInput = 2,         // bad usage, schema or source
    DatabaseFailed = 3,   // the record database failed, not enough memory, an output not written
};

}  // namespace tool

#endif
