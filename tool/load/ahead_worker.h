#ifndef TOOL_LOAD_AHEAD_WORKER_H
#define TOOL_LOAD_AHEAD_WORKER_H

#include <cstdint>
#include <memory>

#include "recorddb/journal.h"
#include "tool/load/load_options.h"
#include "tool/load/load_policy.h"
#include "tool/load/package.h"

namespace tool {

// What is known to be permanent of a load: all that its session had done at a moment, its journal
// entry with it.
struct Standing {
    std::uint64_t moment = 0;  // Session::Moment
    recorddb::journal::JournalKey key;
    std::int64_t run = 0;
    std::uint64_t handled = 0;  // records
};

// Goes through records ahead of their turn, with a connection, a session and an importer of its
// own. It writes nothing. For one thread.
class AheadWorker {
  public:
    // Both outlive the object, which connects when it has something to do.
    AheadWorker(const LoadOptions& options, const LoadPolicy& policy);
    AheadWorker(const AheadWorker&) = delete;
    AheadWorker& operator=(const AheadWorker&) = delete;
    ~AheadWorker();

    // Sets what the package has for the worker to set. Whatever goes wrong, nothing is thrown: then
    // there is no work, and what is wrong shows when the package is gone through in its turn.
    void Work(Package& package, const Standing& standing) noexcept;

  private:
    struct Tools;

    void Do(Package& package, const Standing& standing);
    bool IsUpToDate(const Standing& standing);

    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    std::unique_ptr<Tools> m_tools;
    int m_failedConnections = 0;  // in a row
};

}  // namespace tool

#endif
