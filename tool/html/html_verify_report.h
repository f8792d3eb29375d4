#ifndef TOOL_HTML_HTML_VERIFY_REPORT_H
#define TOOL_HTML_HTML_VERIFY_REPORT_H

#include "recorddb/journal.h"
#include "tool/html/verify_findings.h"
#include "tool/io/replacing_file.h"
#include "tool/verify/sinks/verify_sink.h"

namespace tool {

// The page about a comparison, and the file that it stands in. It appears at its path complete or
// not at all, in place of an earlier one; a comparison that fails or is interrupted leaves none.
// Constructor and Finish throw std::system_error that names the file when it cannot be written; the
// constructor sees that before the comparison.
class HtmlVerifyReport final : public VerifySink {
  public:
    // `journal` is the database's, and stays the caller's.
    HtmlVerifyReport(const VerifyOptions& options, recorddb::journal::Journal& journal);

    void Finds(const MapFinding& finding) override { m_findings.AddFinding(finding); }
    void IsFaulty(const recorddb::Fault& fault) override;
    void Reads(const DataSource& source) override;
    void Differs(const Difference& difference) override;
    void Finish(const VerifySummary& summary) override;

  private:
    recorddb::journal::Journal& m_journal;
    ReplacingFile m_file;
    VerifyFindings m_findings;
};

}  // namespace tool

#endif
