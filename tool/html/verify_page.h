#ifndef TOOL_HTML_VERIFY_PAGE_H
#define TOOL_HTML_VERIFY_PAGE_H

#include <string>
#include <vector>

#include "tool/html/page_verdict.h"
#include "tool/html/verify_findings.h"

namespace tool {

// The page about a comparison of sources with a database: one HTML document that needs nothing
// else, neither scripts nor the network. The same findings give the same page.
std::string VerifyPage(const VerifyFindings& findings);

// How the comparison came out, and what to do next.
PageVerdict VerdictOf(const VerifyFindings& findings);
std::vector<NextStep> NextSteps(const VerifyFindings& findings);

}  // namespace tool

#endif
