#include "tool/process/wait_to_read.h"

#include <fmt/format.h>
#include <poll.h>
#include <pthread.h>

#include <cerrno>
#include <csignal>

#include "tool/process/interrupt.h"

namespace tool {

namespace {

// Keeps the signals of interruption away from this thread as long as it lives.
class HeldInterrupts {
  public:
    HeldInterrupts() {
        sigset_t held;
        sigemptyset(&held);
        sigaddset(&held, SIGINT);
        sigaddset(&held, SIGTERM);
        pthread_sigmask(SIG_BLOCK, &held, &m_before);
    }
    HeldInterrupts(const HeldInterrupts&) = delete;
    HeldInterrupts& operator=(const HeldInterrupts&) = delete;
    ~HeldInterrupts() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

    const sigset_t& Before() const { return m_before; }

  private:
    sigset_t m_before{};
};

}  // namespace

void WaitToRead(int descriptor, const std::string& name) {
    pollfd waiting{descriptor, POLLIN, 0};
    // Whatever is wrong with the descriptor, reading will tell.
    if (::poll(&waiting, 1, 0) != 0) {
        return;
    }
    // A signal that came between the question and the wait would not end the wait.
    const HeldInterrupts held;
    while (Interrupted() == 0) {
        if (::ppoll(&waiting, 1, nullptr, &held.Before()) >= 0 || errno != EINTR) {
            return;
        }
    }
    throw InterruptedWait(
        fmt::format("{}: interrupted while waiting for what comes from there", name));
}

}  // namespace tool
