#include "tool/html/html_load_report.h"

#include "tool/html/load_page.h"
#include "tool/html/tool_version.h"

namespace tool {

HtmlLoadReport::HtmlLoadReport(const std::filesystem::path& path, const LoadOptions& options)
    : m_file(path),
      m_summary({options.rehearse ? "check" : "load", options, std::chrono::system_clock::now(),
                 ToolVersion()}) {}

void HtmlLoadReport::Finish(const LoadTotals& totals) {
    m_summary.Finish(totals);
    m_file.Append(LoadPage(m_summary));
    m_file.Finish();
}

}  // namespace tool
