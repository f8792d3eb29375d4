#ifndef TOOL_REPORT_RUN_WORDS_H
#define TOOL_REPORT_RUN_WORDS_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/load/sinks/load_totals.h"
#include "tool/report/loss_log.h"
#include "tool/sources/kind/map_findings.h"

namespace tool {

// What a load says at its end, and a rehearsal in other words: each a few whole lines.

// `would` stands before what was done: "would be " in a rehearsal, else nothing.
std::string TotalsText(const LoadTotals& totals, std::string_view would);

// The lines of a finding that are ready for the map called `map`, below a line that says so.
std::string PasteText(const MapFinding& finding, std::string_view map);

// What came out of a rehearsal.
struct Rehearsed {
    std::uint64_t rejected = 0;
    std::uint64_t rejectedBefore = 0;  // by an earlier load, and not tried again
    bool complete = true;              // it came to the end of the sources
};

// The sentence that says it: "1 record would be rejected and 3 values lost."
std::string Verdict(const Rehearsed& rehearsed, const LossLog& losses);

}  // namespace tool

#endif
