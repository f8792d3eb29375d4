#ifndef TOOL_HTML_HTML_PAGE_H
#define TOOL_HTML_HTML_PAGE_H

#include <string>

#include "tool/html/run_summary.h"

namespace tool {

// The page about a run, for the people who have to sign a migration off: one HTML document that
// needs nothing else, neither scripts nor the network. The same summary gives the same page.
std::string HtmlPage(const RunSummary& summary);

}  // namespace tool

#endif
