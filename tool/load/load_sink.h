#ifndef TOOL_LOAD_LOAD_SINK_H
#define TOOL_LOAD_LOAD_SINK_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/load/load_totals.h"
#include "tool/load/rejected_record.h"
#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"

namespace tool {

// Takes what happens in a load, or in its rehearsal, in the order in which it happens: a report,
// say, or the folder of rejected records. A sink takes what it has a use for. What it throws ends
// the load.
class LoadSink {
  public:
    LoadSink() = default;
    LoadSink(const LoadSink&) = delete;
    LoadSink& operator=(const LoadSink&) = delete;
    virtual ~LoadSink() = default;

    // News for people, which a quiet run leaves out, and what they are told in any case. A line
    // each.
    virtual void Says(std::string_view /*line*/) {}
    virtual void Warns(std::string_view /*line*/) {}

    // From here on CONFIGURATION is in force; SOFAR is what was done before.
    virtual void Configures(const ImportConfiguration& /*configuration*/,
                            const LoadTotals& /*soFar*/) {}

    // Records are passed over, since an earlier load has dealt with them.
    virtual void PassesOver(std::uint64_t /*records*/) {}

    // Records that an earlier load rejected are still missing, and are not tried again.
    virtual void LeavesRejected(std::uint64_t /*records*/) {}

    virtual void Rejects(const RejectedRecord& /*record*/) {}

    // A transaction is about to end that says which records were rejected. Who keeps their texts
    // sees to the disk now what it has of them: the other order could lose them.
    virtual void Secures() {}

    virtual void Loses(const Loss& /*loss*/) {}

    // So much is done, and so many bytes of the sources have been read. Comes for every record.
    virtual void Advances(const LoadTotals& /*soFar*/, std::uint64_t /*bytes*/) {}

    // The load does not come to its end; WHY is a sentence or more.
    virtual void EndsEarly(const std::string& /*why*/) {}

    // The load is over, also one that failed; what stands on a terminal while it runs ends here.
    virtual void Ends() {}

    // The last call, for reports to be written. Throws WriteError when one cannot be.
    virtual void Finish(const LoadTotals& totals) = 0;
};

}  // namespace tool

#endif
