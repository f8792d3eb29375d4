#ifndef TOOL_HTML_HTML_LOAD_REPORT_H
#define TOOL_HTML_HTML_LOAD_REPORT_H

#include <filesystem>

#include "tool/html/run_summary.h"
#include "tool/io/replacing_file.h"

namespace tool {

// The page about a load in its file. It appears at its path complete or not at all, in place of an
// earlier one. Constructor and Finish throw std::system_error that names the file when it cannot be
// written; the constructor sees that before the load.
class HtmlLoadReport {
  public:
    HtmlLoadReport(const std::filesystem::path& path, const LoadOptions& options);

    RunSummary& Summary() { return m_summary; }

    // Writes the page. To be called once.
    void Finish(const LoadTotals& totals);

  private:
    ReplacingFile m_file;
    RunSummary m_summary;
};

}  // namespace tool

#endif
