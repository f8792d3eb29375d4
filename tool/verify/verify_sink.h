#ifndef TOOL_VERIFY_VERIFY_SINK_H
#define TOOL_VERIFY_VERIFY_SINK_H

#include "recorddb/integrity/fault.h"
#include "tool/verify/data_source.h"
#include "tool/verify/difference.h"
#include "tool/verify/verify_summary.h"

namespace tool {

// Takes what a comparison finds: a report, say. First come the faults of the database itself, then
// the differences as they are found, those that show while the sources are read before those of one
// record after the other.
class VerifySink {
  public:
    VerifySink() = default;
    VerifySink(const VerifySink&) = delete;
    VerifySink& operator=(const VerifySink&) = delete;
    virtual ~VerifySink() = default;

    virtual void IsFaulty(const recorddb::Fault& fault) = 0;

    // Says which source is read next.
    virtual void Reads(const DataSource& /*source*/) {}

    virtual void Differs(const Difference& difference) = 0;

    // The end: called once, behind the last difference. Not called when the comparison fails.
    virtual void Finish(const VerifySummary& summary) = 0;
};

}  // namespace tool

#endif
