#ifndef TOOL_LOAD_SINKS_LOAD_SINK_H
#define TOOL_LOAD_SINKS_LOAD_SINK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/load/sinks/load_totals.h"
#include "tool/load/sinks/rejected_record.h"
#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/map_findings.h"

namespace tool {

// Takes what happens in a load, or in its rehearsal, in the order in which it happens: a report,
// say, or the folder of rejected records. A sink overrides what it has a use for. What it throws
// ends the load.
class LoadSink {
  public:
    LoadSink() = default;
    LoadSink(const LoadSink&) = delete;
    LoadSink& operator=(const LoadSink&) = delete;
    virtual ~LoadSink() = default;

    // A line for people. What a sink Says is left out of a quiet run, what it Warns of never is.
    virtual void Says(std::string_view /*line*/) {}
    virtual void Warns(std::string_view /*line*/) {}

    // Before the first record: what the reading of the sources through a map has found. One that is
    // a loss is told as such, too.
    virtual void Finds(const MapFinding& /*finding*/) {}

    // From here on `configuration` is in force; `soFar` is what was done before.
    virtual void Configures(const ImportConfiguration& /*configuration*/,
                            const LoadTotals& /*soFar*/) {}

    // Records are passed over, since an earlier load has dealt with them.
    virtual void PassesOver(std::uint64_t /*records*/) {}

    // Records that an earlier load rejected are still missing, and are not tried again.
    virtual void LeavesRejected(std::uint64_t /*records*/) {}

    virtual void Rejects(const RejectedRecord& /*record*/) {}

    // A transaction that notes which records were rejected is about to end. A sink that keeps their
    // texts sees that they are on the disk now: later, a crash could lose them.
    virtual void Secures() {}

    virtual void Loses(const Loss& /*loss*/) {}

    // What is done so far, and how many bytes of the sources have been read. Called for every
    // record.
    virtual void Advances(const LoadTotals& /*soFar*/, std::uint64_t /*bytes*/) {}

    // The load does not come to its end; `why` is a sentence or more.
    virtual void EndsEarly(const std::string& /*why*/) {}

    // The load is over or has failed. A progress line on the terminal ends here.
    virtual void Ends() {}

    // The last call, for reports to be written. Throws WriteError when one cannot be.
    virtual void Finish(const LoadTotals& totals) = 0;
};

}  // namespace tool

#endif
