#ifndef TOOL_REPORT_RUN_WORDS_H
#define TOOL_REPORT_RUN_WORDS_H

#include <cstdint>
#include <string>

#include "tool/losses/loss_log.h"
#include "tool/report/report.h"

namespace tool {

// What a load says at its end, and a rehearsal in other words: each a few whole lines.

std::string TotalsText(const LoadTotals& totals, bool rehearsed);

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
