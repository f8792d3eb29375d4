#ifndef TOOL_PROCESS_MEMORY_WATCH_H
#define TOOL_PROCESS_MEMORY_WATCH_H

#include <cstdint>
#include <stdexcept>

namespace tool {

// There is not enough memory for something that what() names, and says what to do.
class MemoryError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Counts from now on how often operator new finds no memory. It throws std::bad_alloc as before;
// where that cannot be caught (a function that may not throw, a handler of exceptions that needs
// memory itself), the process ends with a message and ExitCode::DatabaseFailed. To be called once.
void WatchMemory();

// How often it has found none in this thread. Catchers of all exceptions hide the cause; this tells
// it.
std::uint64_t MemoryFailures();

}  // namespace tool

#endif
