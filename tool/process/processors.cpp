#include "tool/process/processors.h"

#include <sched.h>

#include <algorithm>

namespace tool {

std::size_t WorkersByDefault() {
    cpu_set_t processors;
    CPU_ZERO(&processors);
    // Fails where there are more than the set has room for.
    if (sched_getaffinity(0, sizeof(processors), &processors) != 0) {
        return kMostWorkersByDefault;
    }
    const auto count = static_cast<std::size_t>(CPU_COUNT(&processors));
    return std::clamp(count, std::size_t{1}, kMostWorkersByDefault);
}

}  // namespace tool
