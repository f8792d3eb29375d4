#include "tool/memory_watch.h"

#include <atomic>
#include <new>

namespace tool {

namespace {

std::atomic<std::uint64_t> g_failures{0};

void CountAndThrow() {
    ++g_failures;
    throw std::bad_alloc();
}

}  // namespace

void WatchMemory() {
    std::set_new_handler(CountAndThrow);
}

std::uint64_t MemoryFailures() {
    return g_failures;
}

}  // namespace tool
