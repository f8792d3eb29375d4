#ifndef TOOL_LOAD_AHEAD_WORKER_H
#define TOOL_LOAD_AHEAD_WORKER_H

#include <cstdint>
#include <memory>
#include <string>

#include "recorddb/journal.h"
#include "tool/load/load_options.h"
#include "tool/load/load_policy.h"
#include "tool/load/package.h"
#include "tool/load/watched_keys.h"

namespace tool {

// What is known to be permanent of a load: all that its session had done at a moment, its journal
// entry with it.
struct Standing {
    std::uint64_t moment = 0;  // Session::Moment
    recorddb::journal::JournalKey key;
    std::int64_t run = 0;       // 0: there may be no entry
    std::uint64_t handled = 0;  // records
    // What records wait for, by kinds; null when none waits.
    std::shared_ptr<const WatchedKeys> watched;
};

// Goes through records ahead of their turn, with a connection, a session and an importer of its
// own. It writes nothing. For one thread.
class AheadWorker {
  public:
    // Both outlive the object.
    AheadWorker(const LoadOptions& options, const LoadPolicy& policy);
    AheadWorker(const AheadWorker&) = delete;
    AheadWorker& operator=(const AheadWorker&) = delete;
    ~AheadWorker();

    // Connects; returns why that cannot be, empty when it is done.
    std::string Connect();
    // Whether it has a connection, as far as it knows.
    bool IsConnected() const { return m_tools != nullptr; }

    // Sets what the package has for the worker to set; it has to be connected. Whatever goes wrong,
    // nothing is thrown: then there is no work, and what is wrong shows when the package is gone
    // through in its turn.
    void Work(Package& package, const Standing& standing) noexcept;

  private:
    struct Tools;

    void Do(Package& package, const Standing& standing);
    void Watch(const std::shared_ptr<const WatchedKeys>& watched);
    void NoteWritten(Package& package);
    bool IsUpToDate(const Standing& standing);

    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    std::unique_ptr<Tools> m_tools;
};

}  // namespace tool

#endif
