#include "tool/html/html_page.h"

#include <fmt/format.h>

#include "tool/html/html_style.h"
#include "tool/html/html_text.h"
#include "tool/html/page_sections.h"
#include "tool/html/run_verdict.h"

namespace tool {

namespace {

// Keeps a browser from fetching anything, and from running anything, whatever the data say.
constexpr std::string_view kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; base-uri 'none'; form-action 'none'";

}  // namespace

std::string HtmlPage(const RunSummary& summary) {
    return fmt::format(
               "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
               "<meta http-equiv=\"Content-Security-Policy\" content=\"{}\">\n"
               "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
               "<meta name=\"color-scheme\" content=\"light dark\">\n"
               "<title>{}: {}</title>\n<style>{}</style>\n</head>\n<body>\n",
               kPolicy, HtmlText(PageTitle(summary)), HtmlText(VerdictOf(summary).state),
               HtmlStyle()) +
           PageHeader(summary) + "<main>\n" + FiguresSection(summary) + NextStepsSection(summary) +
           TypesSection(summary) + RejectsSection(summary) + LossesSection(summary) +
           RateSection(summary) + RunSection(summary) +
           fmt::format(
               "</main>\n<footer><p>Written by ztimport {}.</p></footer>\n</body>\n"
               "</html>\n",
               HtmlText(summary.Description().version));
}

}  // namespace tool
