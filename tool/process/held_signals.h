#ifndef TOOL_PROCESS_HELD_SIGNALS_H
#define TOOL_PROCESS_HELD_SIGNALS_H

#include <csignal>

namespace tool {

// As long as it lives, this thread takes no signals, nor do the threads that it makes, ever:
// signals are for the main thread, which is woken by them.
class HeldSignals {
  public:
    HeldSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    HeldSignals(const HeldSignals&) = delete;
    HeldSignals& operator=(const HeldSignals&) = delete;
    ~HeldSignals() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

  private:
    sigset_t m_before{};
};

}  // namespace tool

#endif
