#ifndef TOOL_LOAD_CREW_H
#define TOOL_LOAD_CREW_H

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "tool/load/ahead_worker.h"
#include "tool/load/load_options.h"
#include "tool/load/load_policy.h"
#include "tool/load/package.h"

namespace tool {

// Workers, a thread each, that go through packages of records ahead of their turn. All operations
// are for one thread, which is none of theirs.
class Crew {
  public:
    // Both outlive the object. Where the system has no more threads, there are fewer workers.
    Crew(const LoadOptions& options, const LoadPolicy& policy);
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    // Waits for the packages that are in work.
    ~Crew();

    // How many packages to read ahead, so that nobody has to wait for the reader.
    std::size_t Packages() const { return 1 + 2 * m_threads.size(); }
    // How many transactions may be made permanent while a package is in work or waits.
    std::size_t Transactions() const { return 2 * Packages(); }

    // Says what is permanent. To be called before the first package of a source is given, and when
    // that has changed.
    void Tell(const Standing& standing);

    // Gives a package to the workers. It is left alone until TakeBack.
    void Give(std::shared_ptr<Package> package);

    // Takes a package back that was given: when it is in work, once that is done. True when it has
    // been done ahead.
    bool TakeBack(Package& package);

    // Takes all packages back; those that are in work are the workers' alone from now on.
    void Drop();

  private:
    void Run();
    std::shared_ptr<Package> NextPackage(Standing& standing);
    void Stop();

    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    std::mutex m_mutex;
    std::condition_variable m_given;  // or stopped
    std::condition_variable m_done;
    // All of these, and the states of packages, under the mutex.
    std::deque<std::shared_ptr<Package>> m_queue;
    Standing m_standing;
    bool m_isStopped = false;
    std::vector<std::jthread> m_threads;
};

}  // namespace tool

#endif
