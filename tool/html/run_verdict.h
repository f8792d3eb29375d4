#ifndef TOOL_HTML_RUN_VERDICT_H
#define TOOL_HTML_RUN_VERDICT_H

#include <string>
#include <vector>

#include "tool/html/run_summary.h"

namespace tool {

enum class VerdictTone {
    Good,       // nothing is left to do about the records
    Attention,  // somebody has to look at something
    Bad         // the run failed or proved a fault
};

// How a run came out.
struct RunVerdict {
    VerdictTone tone = VerdictTone::Good;
    std::string state;     // in two or three words, such as "Complete"
    std::string sentence;  // the same in one sentence
};

RunVerdict VerdictOf(const RunSummary& summary);

// Something to do next.
struct NextStep {
    std::string text;
    std::vector<std::string> command;  // the words of a command line; empty when there is none
};

// What to do next, in order.
std::vector<NextStep> NextSteps(const RunSummary& summary);

}  // namespace tool

#endif
