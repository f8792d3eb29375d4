#ifndef TOOL_LOAD_WORKERS_PACKAGE_H
#define TOOL_LOAD_WORKERS_PACKAGE_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "recorddb/session.h"
#include "tool/load/records/kept_records.h"
#include "tool/load/records/watched_keys.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"
#include "tool/process/work_queue.h"

namespace tool {

// Records of a source that are read together, and what a worker has made of them.
struct Package {
    KeptRecords records;
    std::vector<std::uint64_t> bytes;  // of the sources, read up to the end of each

    // Read by the worker.
    std::vector<bool> isDue;  // the records that are to be imported
    std::shared_ptr<const ImportConfiguration> configuration;
    bool guarded = false;
    std::string source;  // its name, for losses

    // Set by the worker. `work` is what it has gathered; null unless every record went through.
    std::unique_ptr<recorddb::GatheredWork> work;
    std::vector<LoadTotals> done;           // by record
    std::vector<std::vector<Loss>> losses;  // the same, where they are looked for
    std::uint64_t moment = 0;               // that the work is based on (Session::Moment)
    // The kinds of values that were watched meanwhile, null for none; and the values of these kinds
    // that records got (KeyOfValue), also those that were overwritten later.
    std::shared_ptr<const WatchedKeys> watched;
    std::vector<std::string> written;

    WorkState state = WorkState::New;
};

}  // namespace tool

#endif
