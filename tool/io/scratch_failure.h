#ifndef TOOL_IO_SCRATCH_FAILURE_H
#define TOOL_IO_SCRATCH_FAILURE_H

#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "recorddb/errors.h"

namespace tool {

// Does `work` on a scratch database, of which messages speak as the temporary file that `user`:
// "verifying needs". A failure of it is not one of the record database, so it comes out as a
// std::runtime_error that says what to do.
template <typename Work>
decltype(auto) OnScratchOf(std::string_view user, Work&& work) {
    try {
        return std::forward<Work>(work)();
    } catch (const recorddb::sql::Error& error) {
        throw std::runtime_error(
            "the temporary file that " + std::string(user) + " cannot be used (" +
            error.DriverText() +
            "); make room in the folder for temporary files, or name another one in TMPDIR");
    }
}

}  // namespace tool

#endif
