#ifndef TOOL_HTML_LOAD_VERDICT_H
#define TOOL_HTML_LOAD_VERDICT_H

#include <vector>

#include "tool/html/page_verdict.h"
#include "tool/html/run_summary.h"

namespace tool {

// How the load came out.
PageVerdict VerdictOf(const RunSummary& summary);

// What to do next, in order.
std::vector<NextStep> NextSteps(const RunSummary& summary);

}  // namespace tool

#endif
