#ifndef TOOL_VERIFY_RECORDS_VERIFY_SCRATCH_H
#define TOOL_VERIFY_RECORDS_VERIFY_SCRATCH_H

#include <utility>

#include "tool/io/scratch_failure.h"

namespace tool {

// Does `work` on the scratch database (tool/io/scratch_failure.h).
template <typename Work>
decltype(auto) OnScratch(Work&& work) {
    return OnScratchOf("verifying needs", std::forward<Work>(work));
}

}  // namespace tool

#endif
