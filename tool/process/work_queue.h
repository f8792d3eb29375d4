#ifndef TOOL_PROCESS_WORK_QUEUE_H
#define TOOL_PROCESS_WORK_QUEUE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <utility>

namespace tool {

// How far a package has come: from the thread that gives it to the worker that does it.
enum class WorkState { New, Queued, InWork, Done };

// Packages between a thread that gives them, in an order, and workers that do them. A package
// belongs to the workers from Give to TakeBack. It has a member `WorkState state`, which is the
// queue's.
template <typename Package>
class WorkQueue {
  public:
    // Whether a package that no worker has begun is left to them, as long as there are any.
    enum class Unbegun { Taken, Left };

    // By the thread that gives.
    void Give(std::shared_ptr<Package> package) {
        {
            const std::lock_guard lock(m_mutex);
            package->state = WorkState::Queued;
            m_queue.push_back(std::move(package));
        }
        // Wakes all: a single one might have to connect to a server before it takes the package.
        m_given.notify_all();
    }

    // Waits for a package that a worker has begun. Nothing happens for one that was never given.
    void TakeBack(Package& package, Unbegun unbegun = Unbegun::Taken) {
        std::unique_lock lock(m_mutex);
        m_done.wait(lock, [&] {
            const bool isLeft = unbegun == Unbegun::Left && m_workers > 0;
            return package.state == WorkState::Queued ? !isLeft
                                                      : package.state != WorkState::InWork;
        });
        if (package.state == WorkState::Queued) {
            std::erase_if(m_queue,
                          [&package](const auto& queued) { return queued.get() == &package; });
            package.state = WorkState::Done;
        }
    }

    // Whether TakeBack would find it done, without waiting.
    bool IsDone(const Package& package) {
        const std::lock_guard lock(m_mutex);
        return package.state == WorkState::Done;
    }

    // Takes all back without waiting. Workers finish those that they have begun, for nobody.
    void Drop() {
        const std::lock_guard lock(m_mutex);
        m_queue.clear();
    }

    // From now on workers get no package, and those that wait for one go on.
    void Stop() {
        {
            const std::lock_guard lock(m_mutex);
            m_isStopped = true;
            m_queue.clear();
        }
        m_given.notify_all();
        m_stopped.notify_all();
    }

    // Counts a worker. To be called before its thread begins, so that nobody takes it for missing.
    void Enter() {
        const std::lock_guard lock(m_mutex);
        ++m_workers;
    }
    // To be called when a worker is done with the queue, or its thread could not be made.
    void Leave() {
        {
            const std::lock_guard lock(m_mutex);
            --m_workers;
        }
        m_done.notify_all();
    }

    // By workers. Waits until there is something to do; false when there will not be any more.
    bool WaitForWork() {
        std::unique_lock lock(m_mutex);
        return WaitForWork(lock);
    }

    // The next package; null when there will be none.
    std::shared_ptr<Package> Take() {
        std::unique_lock lock(m_mutex);
        if (!WaitForWork(lock)) {
            return nullptr;
        }
        std::shared_ptr<Package> package = std::move(m_queue.front());
        m_queue.pop_front();
        package->state = WorkState::InWork;
        return package;
    }

    void Finish(Package& package) {
        {
            const std::lock_guard lock(m_mutex);
            package.state = WorkState::Done;
        }
        m_done.notify_all();
    }

    // Waits for that time, or until Stop; false after Stop.
    bool Pause(std::chrono::milliseconds time) {
        std::unique_lock lock(m_mutex);
        m_stopped.wait_for(lock, time, [this] { return m_isStopped; });
        return !m_isStopped;
    }

  private:
    bool WaitForWork(std::unique_lock<std::mutex>& lock) {
        m_given.wait(lock, [this] { return m_isStopped || !m_queue.empty(); });
        return !m_isStopped;
    }

    std::mutex m_mutex;
    std::condition_variable m_given;  // a package was given, or Stop was called
    std::condition_variable m_done;   // a package was done, or a worker has left
    std::condition_variable m_stopped;
    // To be used under the mutex only, as are the states of packages.
    std::deque<std::shared_ptr<Package>> m_queue;
    std::size_t m_workers = 0;
    bool m_isStopped = false;
};

}  // namespace tool

#endif
