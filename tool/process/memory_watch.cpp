#include "tool/process/memory_watch.h"

#include <unistd.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <string_view>

#include "tool/process/exit_code.h"

namespace tool {

namespace {

thread_local std::uint64_t t_failures = 0;

void CountAndThrow() {
    ++t_failures;
    throw std::bad_alloc();
}

std::terminate_handler g_formerTerminate = nullptr;

bool IsOutOfMemory() {
    const auto current = std::current_exception();
    if (!current) {
        // Functions of the standard library that let no exception out, such as the step to a
        // folder's next file, end the process without one.
        return t_failures > 0;
    }
    try {
        std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
}

// Must do without memory.
[[noreturn]] void Terminate() {
    if (IsOutOfMemory()) {
        constexpr std::string_view text =
            "ztimport: there is not enough memory; make some free, then start the same command "
            "again\n";
        [[maybe_unused]] const auto written = ::write(STDERR_FILENO, text.data(), text.size());
        std::_Exit(static_cast<int>(ExitCode::DatabaseFailed));
    }
    g_formerTerminate();
    std::abort();
}

}  // namespace

void WatchMemory() {
    std::set_new_handler(CountAndThrow);
    g_formerTerminate = std::set_terminate(Terminate);
}

std::uint64_t MemoryFailures() {
    return t_failures;
}

}  // namespace tool
