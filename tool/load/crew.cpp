#include "tool/load/crew.h"

#include <csignal>
#include <system_error>
#include <utility>

namespace tool {

namespace {

// Signals are for the main thread, which is woken by them; the threads that are made meanwhile do
// not take any.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    SignalsHeld(const SignalsHeld&) = delete;
    SignalsHeld& operator=(const SignalsHeld&) = delete;
    ~SignalsHeld() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }

  private:
    sigset_t m_before{};
};

}  // namespace

Crew::Crew(const LoadOptions& options, const LoadPolicy& policy)
    : m_options(options), m_policy(policy) {
    const SignalsHeld held;
    try {
        while (m_threads.size() < options.workers) {
            m_threads.emplace_back([this] { Run(); });
        }
    } catch (const std::system_error&) {
        // Whatever is not done ahead is done in its turn.
    }
}

Crew::~Crew() {
    Stop();
}

void Crew::Stop() {
    {
        const std::lock_guard lock(m_mutex);
        m_isStopped = true;
        m_queue.clear();
    }
    m_given.notify_all();
    m_threads.clear();
}

void Crew::Tell(const Standing& standing) {
    const std::lock_guard lock(m_mutex);
    m_standing = standing;
}

void Crew::Give(std::shared_ptr<Package> package) {
    {
        const std::lock_guard lock(m_mutex);
        package->state = Package::State::Queued;
        m_queue.push_back(std::move(package));
    }
    m_given.notify_one();
}

bool Crew::TakeBack(Package& package) {
    std::unique_lock lock(m_mutex);
    if (package.state == Package::State::Queued) {
        std::erase_if(m_queue, [&package](const auto& queued) { return queued.get() == &package; });
        package.state = Package::State::Done;
    }
    m_done.wait(lock, [&package] { return package.state != Package::State::InWork; });
    return package.work != nullptr;
}

void Crew::Drop() {
    const std::lock_guard lock(m_mutex);
    m_queue.clear();
}

std::shared_ptr<Package> Crew::NextPackage(Standing& standing) {
    std::unique_lock lock(m_mutex);
    m_given.wait(lock, [this] { return m_isStopped || !m_queue.empty(); });
    if (m_isStopped) {
        return nullptr;
    }
    std::shared_ptr<Package> package = std::move(m_queue.front());
    m_queue.pop_front();
    package->state = Package::State::InWork;
    standing = m_standing;
    return package;
}

void Crew::Run() {
    AheadWorker worker(m_options, m_policy);
    Standing standing;
    while (const std::shared_ptr<Package> package = NextPackage(standing)) {
        worker.Work(*package, standing);
        {
            const std::lock_guard lock(m_mutex);
            package->state = Package::State::Done;
        }
        m_done.notify_all();
    }
}

}  // namespace tool
