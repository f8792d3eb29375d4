#include "tool/html/html_load_report.h"

#include <utility>

#include "tool/html/load_page.h"
#include "tool/text/masked_password.h"

namespace tool {

namespace {

LoadOptions ForPage(LoadOptions options) {
    options.database = WithoutPasswords(options.database);
    return options;
}

}  // namespace

HtmlLoadReport::HtmlLoadReport(const LoadOptions& options, std::string command,
                               const LoadPolicy& policy)
    : m_file(options.html),
      m_summary({.command = std::move(command),
                 .options = ForPage(options),
                 .start = std::chrono::system_clock::now(),
                 .version = ZT_VERSION,
                 .isRehearsal = !policy.KeepsGroups()}) {}

void HtmlLoadReport::Configures(const ImportConfiguration& configuration, const LoadTotals& soFar) {
    m_summary.StartType(configuration.RecordType(), configuration.Data(), soFar);
}

void HtmlLoadReport::Advances(const LoadTotals& soFar, std::uint64_t /*bytes*/) {
    m_summary.Advance(soFar.seconds, soFar.read);
}

void HtmlLoadReport::Finish(const LoadTotals& totals) {
    m_summary.Finish(totals);
    m_file.Append(LoadPage(m_summary));
    m_file.Finish();
}

}  // namespace tool
