#ifndef TOOL_LOAD_WORKERS_AHEAD_WORKER_H
#define TOOL_LOAD_WORKERS_AHEAD_WORKER_H

#include <cstdint>
#include <memory>
#include <string>

#include "recorddb/journal.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/records/watched_keys.h"
#include "tool/load/workers/package.h"

namespace tool {

// What is committed of a load: a moment of its session, and how far the journal entry of its source
// had come by then. A database that does not show this much lags behind.
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

    // Goes through the package and fills in what package.h marks as set by the worker. To be called
    // only when connected. Never throws: on any failure `package.work` stays null, and the main
    // thread meets the failure when it does the package in its turn.
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
