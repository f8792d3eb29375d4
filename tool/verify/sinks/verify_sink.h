#ifndef TOOL_VERIFY_SINKS_VERIFY_SINK_H
#define TOOL_VERIFY_SINKS_VERIFY_SINK_H

#include <cstdint>
#include <string_view>

#include "recorddb/integrity.h"
#include "tool/sources/kind/map_findings.h"
#include "tool/verify/sinks/data_source.h"
#include "tool/verify/sinks/difference.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// Takes what a comparison finds: a report, say. First come the faults of the database itself, then
// the differences that show while the sources are read, then those of one record after the other. A
// sink takes what it has a use for. What it throws ends the comparison.
class VerifySink {
  public:
    VerifySink() = default;
    VerifySink(const VerifySink&) = delete;
    VerifySink& operator=(const VerifySink&) = delete;
    virtual ~VerifySink() = default;

    // The next stage of the work begins. `total` is its length: the bytes of the sources where
    // these are read, records where these are compared, 0 where it is not known.
    virtual void Begins(std::uint64_t /*total*/) {}

    // In this stage, `records` have been dealt with so far, and as much of its length as `done`
    // says. Called for every record.
    virtual void Advances(std::uint64_t /*records*/, std::uint64_t /*done*/) {}

    // A line for people, which is no difference.
    virtual void Warns(std::string_view /*line*/) {}

    // Before the sources are compared: what the reading of them through a map has found. One that
    // is a loss is told as a difference, too.
    virtual void Finds(const MapFinding& /*finding*/) {}

    virtual void IsFaulty(const recorddb::Fault& fault) = 0;

    // Says which source is read next.
    virtual void Reads(const DataSource& /*source*/) {}

    virtual void Differs(const Difference& difference) = 0;

    // The end: called once, after the last difference. Not called when the comparison fails.
    virtual void Finish(const VerifySummary& summary) = 0;
};

}  // namespace tool

#endif
