#ifndef TOOL_LOAD_OUTPUT_H
#define TOOL_LOAD_OUTPUT_H

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

#include "tool/load_options.h"
#include "tool/packet_reader.h"
#include "tool/progress.h"
#include "tool/rejects.h"
#include "tool/report.h"

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

    // Sets the configuration under which what follows is rejected.
    void SetConfiguration(std::string packet);

    void AddRead(std::uint64_t records = 1) { m_totals.read += records; }
    void AddSkipped(std::uint64_t records) { m_totals.skipped += records; }
    void AddImported(const LoadTotals& done);
    void AddReject(const RejectedRecord& record, const std::string& sourceId);

    // Tells of records that an earlier load of the source rejected; unless they are tried again
    // now, the load does not count as complete.
    void NoteRejectedBefore(const std::string& source, std::uint64_t records, bool retried);
    bool LeavesRejectedBefore() const { return m_leavesRejectedBefore; }

    // Says how many bytes of the sources have been read.
    void Advance(std::uint64_t bytes) { m_progress.Update(m_totals.read, bytes); }

    const LoadTotals& Totals() const { return m_totals; }

    // Shows the totals and writes the report.
    void Finish();

  private:
    void ShowReject(const RejectedRecord& record, const std::string& sourceId);

    bool m_quiet;
    std::ostream& m_out;
    Progress m_progress;
    std::optional<RejectWriter> m_rejects;
    std::optional<ReportWriter> m_report;
    LoadTotals m_totals;
    bool m_leavesRejectedBefore = false;
    std::chrono::steady_clock::time_point m_start;
};

// The sum of two loads' numbers of records, entries and marks; the time is left alone.
void Add(LoadTotals& totals, const LoadTotals& more);

}  // namespace tool

#endif
