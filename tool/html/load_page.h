#ifndef TOOL_HTML_LOAD_PAGE_H
#define TOOL_HTML_LOAD_PAGE_H

#include <string>

#include "tool/html/run_summary.h"

namespace tool {

// The page about a load or its rehearsal, for the people who have to sign a migration off: one HTML
// document that needs nothing else, neither scripts nor the network. The same summary gives the
// same page.
std::string LoadPage(const RunSummary& summary);

}  // namespace tool

#endif
