#include "tool/commands/load_workers.h"

#include <fmt/format.h>

#include <string>

#include "recorddb/session.h"
#include "recorddb/sql.h"
#include "tool/process/processors.h"
#include "tool/process/usage_error.h"

namespace tool {

namespace {

// Why there can be one worker only; empty when there can be more.
std::string WhyOne(const LoadOptions& options, const LoadPolicy& policy) {
    if (!recorddb::sql::IsServerUrl(options.database)) {
        return "a database in a file has one writer; more workers are for databases on a server";
    }
    if (!options.trace.empty()) {
        return "--trace tells of the records one after the other";
    }
    if (options.wholePackets) {
        return "--whole-packets hands over one packet after the other";
    }
    return policy.WritingFor(options) == recorddb::Writing::AtOnce
               ? "for --html each record is written by itself"
               : "";
}

}  // namespace

std::size_t WorkersFor(const LoadOptions& options, const LoadPolicy& policy) {
    const std::string whyOne = WhyOne(options, policy);
    if (options.workers > 1 && !whyOne.empty()) {
        throw UsageError(fmt::format("--workers {}: {}", options.workers, whyOne));
    }
    if (options.workers > 0) {
        return options.workers;
    }
    return whyOne.empty() ? WorkersByDefault() : 1;
}

}  // namespace tool
