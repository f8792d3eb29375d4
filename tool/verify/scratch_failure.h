#ifndef TOOL_VERIFY_SCRATCH_FAILURE_H
#define TOOL_VERIFY_SCRATCH_FAILURE_H

#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"

namespace tool {

// Does `work` on the scratch database. A failure of it is not one of the record database, so it
// comes out as a std::runtime_error that says what to do.
template <typename Work>
decltype(auto) OnScratch(Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const recorddb::sql::Error& error) {
        throw std::runtime_error(
            "the temporary file that verifying needs cannot be used (" + error.DriverText() +
            "); make room in the folder for temporary files, or name another one in TMPDIR");
    }
}

}  // namespace tool

#endif
