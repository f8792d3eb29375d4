#ifndef TOOL_HTML_HTML_LOAD_REPORT_H
#define TOOL_HTML_HTML_LOAD_REPORT_H

#include <cstdint>
#include <string>

#include "tool/html/run_summary.h"
#include "tool/io/replacing_file.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/sinks/load_sink.h"

namespace tool {

// The page about a load, and the file that it stands in. It appears at its path complete or not at
// all, in place of an earlier one. Constructor and Finish throw std::system_error that names the
// file when it cannot be written; the constructor sees that before the load.
class HtmlLoadReport final : public LoadSink {
  public:
    // `command` is the name of the command, and `policy` says whether anything is kept.
    HtmlLoadReport(const LoadOptions& options, std::string command, const LoadPolicy& policy);

    void Configures(const ImportConfiguration& configuration, const LoadTotals& soFar) override;
    void PassesOver(std::uint64_t records) override { m_summary.AddLoadedBefore(records); }
    void LeavesRejected(std::uint64_t records) override { m_summary.AddRejectedBefore(records); }
    void Finds(const MapFinding& finding) override { m_summary.AddFinding(finding); }
    void Rejects(const RejectedRecord& record) override { m_summary.AddReject(record); }
    void Loses(const Loss& loss) override { m_summary.AddLoss(loss); }
    void Advances(const LoadTotals& soFar, std::uint64_t bytes) override;
    void EndsEarly(const std::string& why) override { m_summary.NoteEarlyEnd(why); }
    // Writes the page. To be called once.
    void Finish(const LoadTotals& totals) override;

  private:
    ReplacingFile m_file;
    RunSummary m_summary;
};

}  // namespace tool

#endif
