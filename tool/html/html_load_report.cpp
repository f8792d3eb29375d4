#include "tool/html/html_load_report.h"

#include "tool/html/load_page.h"
#include "tool/html/tool_version.h"
#include "tool/text/masked_password.h"

namespace tool {

namespace {

LoadOptions ForPage(LoadOptions options) {
    options.database = WithoutPasswords(options.database);
    return options;
}

}  // namespace

HtmlLoadReport::HtmlLoadReport(const std::filesystem::path& path, const LoadOptions& options)
    : m_file(path),
      m_summary({options.rehearse ? "check" : "load", ForPage(options),
                 std::chrono::system_clock::now(), ToolVersion()}) {}

void HtmlLoadReport::Finish(const LoadTotals& totals) {
    m_summary.Finish(totals);
    m_file.Append(LoadPage(m_summary));
    m_file.Finish();
}

}  // namespace tool
