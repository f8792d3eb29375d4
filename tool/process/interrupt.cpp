#include "tool/process/interrupt.h"

#include <atomic>
#include <csignal>

namespace tool {

namespace {

// Read by all threads.
std::atomic<int> interruptedBy = 0;
static_assert(std::atomic<int>::is_always_lock_free);

void Remember(int signal) {
    interruptedBy = signal;
}

}  // namespace

void WatchInterrupts() {
    interruptedBy = 0;
    struct sigaction action = {};
    action.sa_handler = Remember;
    // The handler serves once: whoever presses Ctrl-C again means it.
    action.sa_flags = static_cast<int>(SA_RESETHAND | SA_RESTART);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
}

int Interrupted() {
    return interruptedBy;
}

}  // namespace tool
