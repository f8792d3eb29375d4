#include "tool/load/workers/crew.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <new>
#include <system_error>
#include <utility>

#include "tool/process/held_signals.h"

namespace tool {

namespace {

// For tests, which wait for the workers: after so many failed attempts to connect a worker gives
// up. Otherwise it tries again for as long as the load takes.
constexpr int kMostFailedConnections = 6;

// A server may be away for long, or have no room for a while: it is asked again as long as the load
// takes, but not all the time.
std::chrono::seconds WaitToConnectAfter(int failures) {
    constexpr int most = 4;
    return std::chrono::seconds(1U << static_cast<unsigned>(std::min(failures - 1, most)));
}

}  // namespace

Crew::Crew(const LoadOptions& options, const LoadPolicy& policy)
    : m_options(options), m_policy(policy) {}

Crew::~Crew() {
    m_queue.Stop();
    m_threads.clear();
}

// Whatever is not done ahead, for want of threads or connections, is done in its turn.
void Crew::Start() {
    const HeldSignals held;
    while (m_threads.size() < Workers()) {
        m_queue.Enter();
        try {
            m_threads.emplace_back([this] { Run(); });
        } catch (const std::system_error& error) {
            m_queue.Leave();
            NoteTrouble(fmt::format("no thread for one ({})", error.code().message()));
            return;
        }
    }
}

void Crew::Tell(const Standing& standing) {
    const std::lock_guard lock(m_mutex);
    m_standing = standing;
}

Standing Crew::CurrentStanding() {
    const std::lock_guard lock(m_mutex);
    return m_standing;
}

void Crew::Give(std::shared_ptr<Package> package) {
    m_queue.Give(std::move(package));
    if (std::exchange(m_hasGivenOne, true) && m_threads.empty()) {
        Start();
    }
}

bool Crew::TakeBack(Package& package) {
    using Unbegun = WorkQueue<Package>::Unbegun;
    m_queue.TakeBack(package, m_options.waitsForWorkers ? Unbegun::Left : Unbegun::Taken);
    return package.work != nullptr;
}

void Crew::NoteTrouble(std::string why) {
    const std::lock_guard lock(m_mutex);
    m_trouble = std::move(why);
}

std::string Crew::TakeTrouble() {
    const std::lock_guard lock(m_mutex);
    if (m_trouble.empty() || std::exchange(m_hasToldTrouble, true)) {
        return "";
    }
    return m_trouble;
}

// Makes sure that a worker has a connection, before it takes a package: nobody waits for a package
// because a server does not answer. False when the worker is to end.
bool Crew::Connect(AheadWorker& worker) {
    for (int failures = 1; !worker.IsConnected(); ++failures) {
        if (!m_queue.WaitForWork()) {
            return false;
        }
        const std::string why = worker.Connect();
        if (why.empty()) {
            return true;
        }
        NoteTrouble(fmt::format("no connection for one ({})", why));
        const bool goesOn = m_options.waitsForWorkers ? failures < kMostFailedConnections
                                                      : m_queue.Pause(WaitToConnectAfter(failures));
        if (!goesOn) {
            return false;
        }
    }
    return true;
}

// A worker whose memory runs out does without that package, or ends: what is not done ahead is done
// in its turn.
void Crew::Run() {
    try {
        AheadWorker worker(m_options, m_policy);
        while (Connect(worker)) {
            const std::shared_ptr<Package> package = m_queue.Take();
            if (!package) {
                break;
            }
            Do(worker, *package);
            m_queue.Finish(*package);
        }
    } catch (const std::bad_alloc&) {
    }
    m_queue.Leave();
}

void Crew::Do(AheadWorker& worker, Package& package) {
    try {
        worker.Work(package, CurrentStanding());
    } catch (const std::bad_alloc&) {
    }
}

}  // namespace tool
