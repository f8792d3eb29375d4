#include "tool/html/html_report.h"

#include "tool/html/html_page.h"

namespace tool {

HtmlReport::HtmlReport(const std::filesystem::path& path, const LoadOptions& options)
    : m_file(path), m_summary({"load", options, std::chrono::system_clock::now(), ZT_VERSION}) {}

void HtmlReport::Finish(const LoadTotals& totals) {
    m_summary.Finish(totals);
    m_file.Append(HtmlPage(m_summary));
    m_file.Finish();
}

}  // namespace tool
