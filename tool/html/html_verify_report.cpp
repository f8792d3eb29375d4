#include "tool/html/html_verify_report.h"

#include "tool/html/verify_page.h"
#include "tool/text/masked_password.h"

namespace tool {

namespace {

VerifyOptions ForPage(VerifyOptions options) {
    options.database = WithoutPasswords(options.database);
    return options;
}

}  // namespace

HtmlVerifyReport::HtmlVerifyReport(const VerifyOptions& options,
                                   recorddb::journal::Journal& journal)
    : m_journal(journal),
      m_file(options.html),
      m_findings(ForPage(options), std::chrono::system_clock::now(), ZT_VERSION) {}

void HtmlVerifyReport::IsFaulty(const recorddb::Fault& fault) {
    m_findings.AddFault(fault);
}

void HtmlVerifyReport::Reads(const DataSource& source) {
    const auto entry = m_journal.Find(source.key);
    m_findings.AddLoad(source, entry ? &*entry : nullptr);
}

void HtmlVerifyReport::Differs(const Difference& difference) {
    m_findings.AddDifference(difference);
}

void HtmlVerifyReport::Finish(const VerifySummary& summary) {
    m_findings.Finish(summary);
    m_file.Append(VerifyPage(m_findings));
    m_file.Finish();
}

}  // namespace tool
