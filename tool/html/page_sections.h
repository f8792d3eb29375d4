#ifndef TOOL_HTML_PAGE_SECTIONS_H
#define TOOL_HTML_PAGE_SECTIONS_H

#include <string>
#include <string_view>

#include "tool/html/run_summary.h"

namespace tool {

// The parts of the page about a run, each an HTML element or a few.

std::string PageHeader(const RunSummary& summary);
std::string FiguresSection(const RunSummary& summary);
std::string NextStepsSection(const RunSummary& summary);
std::string TypesSection(const RunSummary& summary);
std::string RejectsSection(const RunSummary& summary);
std::string LossesSection(const RunSummary& summary);
std::string RateSection(const RunSummary& summary);
std::string RunSection(const RunSummary& summary);

// A part of the page: ID names it for links, TITLE is plain text, CONTENT is HTML.
std::string PageSection(std::string_view id, std::string_view title, const std::string& content);

// What the page is called: in its head, and on its top.
std::string PageTitle(const RunSummary& summary);

}  // namespace tool

#endif
