#ifndef TOOL_LOAD_WORKERS_CREW_H
#define TOOL_LOAD_WORKERS_CREW_H

#include <cstddef>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/workers/ahead_worker.h"
#include "tool/load/workers/package.h"
#include "tool/process/work_queue.h"

namespace tool {

// Workers, a thread each, that go through packages of records ahead of their turn. All operations
// are for one thread, which is none of theirs.
class Crew {
  public:
    // Both outlive the object. The workers come when a second package is given: one by itself is
    // done sooner than they are there.
    Crew(const LoadOptions& options, const LoadPolicy& policy);
    Crew(const Crew&) = delete;
    Crew& operator=(const Crew&) = delete;
    // Waits for the packages that are in work, and for connections that are being made.
    ~Crew();

    std::size_t Workers() const { return m_options.workers; }
    // How many packages to read ahead, so that nobody has to wait for the reader.
    std::size_t Packages() const { return 1 + 2 * Workers(); }
    // How many of the latest transactions the session has to remember, so that each package can be
    // compared with all that was committed since its work began.
    std::size_t Transactions() const { return 2 * Packages(); }

    // Says what is permanent. To be called before the first package of a source is given, and when
    // that has changed.
    void Tell(const Standing& standing);

    // Gives a package to the workers. It is left alone until TakeBack.
    void Give(std::shared_ptr<Package> package);

    // Takes back a package that was given; waits while a worker is at it. True when it has been
    // done ahead.
    bool TakeBack(Package& package);

    // Whether a package that was given has been done ahead already.
    bool HasDone(const Package& package) {
        return m_queue.IsDone(package) && package.work != nullptr;
    }

    // Why there are fewer workers than there should be, as a clause; empty when there is no reason,
    // and when it was told before.
    std::string TakeTrouble();

    // Takes all packages back without waiting: those that workers are at are finished and thrown
    // away.
    void Drop() { m_queue.Drop(); }

  private:
    void Start();
    void Run();
    void Do(AheadWorker& worker, Package& package);
    bool Connect(AheadWorker& worker);
    void NoteTrouble(std::string why);
    Standing CurrentStanding();

    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    WorkQueue<Package> m_queue;
    bool m_hasGivenOne = false;
    std::mutex m_mutex;
    // These under the mutex.
    Standing m_standing;
    std::string m_trouble;
    bool m_hasToldTrouble = false;
    std::vector<std::jthread> m_threads;
};

}  // namespace tool

#endif
