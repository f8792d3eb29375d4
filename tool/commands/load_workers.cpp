#include "tool/commands/load_workers.h"

#include <fmt/format.h>

#include <string>

#include "recorddb/sql.h"
#include "tool/process/processors.h"
#include "tool/process/usage_error.h"

namespace tool {

namespace {

// Why there can be one worker only; empty when there can be more.
std::string WhyOne(const LoadOptions& options) {
    if (!recorddb::sql::IsServerUrl(options.database)) {
        return "a database in a file has one writer; more workers are for databases on a server";
    }
    if (!options.trace.empty()) {
        return "--trace tells of the records one after the other";
    }
    if (!options.html.empty()) {
        return "for --html each record is written by itself";
    }
    return options.wholePackets ? "--whole-packets hands over one packet after the other" : "";
}

}  // namespace

std::size_t WorkersFor(const LoadOptions& options) {
    const std::string whyOne = WhyOne(options);
    if (options.workers > 1 && !whyOne.empty()) {
        throw UsageError(fmt::format("--workers {}: {}", options.workers, whyOne));
    }
    if (options.workers > 0) {
        return options.workers;
    }
    return whyOne.empty() ? WorkersByDefault() : 1;
}

}  // namespace tool
