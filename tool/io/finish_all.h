#ifndef TOOL_IO_FINISH_ALL_H
#define TOOL_IO_FINISH_ALL_H

#include <exception>
#include <vector>

#include "tool/io/write_error.h"

namespace tool {

// Finishes each of `sinks` with the result. One that cannot be written does not keep the others
// from being written; its WriteError, the last one if there are several, is thrown afterwards.
template <typename Sink, typename Result>
void FinishAll(const std::vector<Sink*>& sinks, const Result& result) {
    std::exception_ptr failure;
    for (Sink* const sink : sinks) {
        try {
            sink->Finish(result);
        } catch (const WriteError&) {
            failure = std::current_exception();
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
}

}  // namespace tool

#endif
