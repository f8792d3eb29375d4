#include "tool/load/crew.h"

#include <fmt/format.h>

#include <chrono>
#include <system_error>
#include <utility>

#include "tool/process/held_signals.h"

namespace tool {

namespace {

// A server that takes no further connection is asked so often, in half a minute.
constexpr int kMostFailedConnections = 6;

std::chrono::seconds WaitAfter(int failures) {
    return std::chrono::seconds(1U << static_cast<unsigned>(failures - 1));
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
        const bool isLast = failures == kMostFailedConnections;
        if (isLast || (!m_options.waitsForWorkers && !m_queue.Pause(WaitAfter(failures)))) {
            return false;
        }
    }
    return true;
}

void Crew::Run() {
    AheadWorker worker(m_options, m_policy);
    while (Connect(worker)) {
        const std::shared_ptr<Package> package = m_queue.Take();
        if (!package) {
            break;
        }
        worker.Work(*package, CurrentStanding());
        m_queue.Finish(*package);
    }
    m_queue.Leave();
}

}  // namespace tool
