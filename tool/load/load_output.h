#ifndef TOOL_LOAD_LOAD_OUTPUT_H
#define TOOL_LOAD_LOAD_OUTPUT_H

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "tool/html/html_load_report.h"
#include "tool/load/load_options.h"
#include "tool/losses/loss_log.h"
#include "tool/packet/packet_reader.h"
#include "tool/rejects/rejects.h"
#include "tool/report/progress.h"
#include "tool/report/report.h"

namespace tool {

// What a load tells: the totals, the progress, the rejections on the terminal, in the rejects
// folder and in the report.
class LoadOutput {
  public:
    // Opens what the options ask for. OUT and ERR stay the caller's.
    LoadOutput(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
               std::ostream& err);

    // A line for people, which --quiet leaves out.
    void Say(std::string_view line);
    // A line that is shown in any case.
    void Warn(std::string_view line);

    // Sets the configuration that is in force for what follows.
    void SetConfiguration(const ImportConfiguration& configuration);

    void AddRead(std::uint64_t records = 1) { m_totals.read += records; }
    // Counts records that the journal knows as loaded.
    void AddSkipped(std::uint64_t records);
    void AddImported(const LoadTotals& done);
    void AddReject(const RejectedRecord& record, const std::string& sourceId);

    // Sees to the disk what was set aside of rejected records. To be called before a transaction
    // ends that says that they were rejected.
    void SyncRejects();

    // Takes what is lost silently: a load warns of it, a rehearsal counts and reports it.
    void AddLoss(const Loss& loss);
    const LossLog& Losses() const { return m_losses; }

    // Tells of records that an earlier load of the source rejected; unless they are tried again
    // now, the load does not count as complete.
    void NoteRejectedBefore(const std::string& source, std::uint64_t records, bool retried);
    bool LeavesRejectedBefore() const { return m_rejectedBefore > 0; }

    // Says why the load does not come to its end.
    void NoteEarlyEnd(const std::string& why);

    // Says how many bytes of the sources have been read.
    void Advance(std::uint64_t bytes);

    const LoadTotals& Totals() const { return m_totals; }

    // Shows the totals and writes the reports. Throws WriteError when one of them cannot be
    // written; the others have been dealt with then.
    void Finish();

  private:
    double Elapsed() const;
    void ShowTotals();
    void WarnOf(const Loss& loss);
    void ShowReject(const RejectedRecord& record, const std::string& sourceId);

    bool m_quiet;
    bool m_rehearse;
    std::ostream& m_out;
    Progress m_progress;
    std::optional<RejectWriter> m_rejects;
    std::optional<ReportWriter> m_report;
    std::optional<HtmlLoadReport> m_html;
    LoadTotals m_totals;
    LossLog m_losses;
    std::map<LossKind, std::uint64_t> m_warned;  // of a load
    std::uint64_t m_rejectedBefore = 0;
    bool m_complete = true;
    std::chrono::steady_clock::time_point m_start;
};

// The sum of two loads' numbers of records, entries and marks; the time is left alone.
void Add(LoadTotals& totals, const LoadTotals& more);

}  // namespace tool

#endif
