#ifndef TOOL_REPORT_REPORT_H
#define TOOL_REPORT_REPORT_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "tool/losses/loss.h"
#include "tool/report/list_report.h"

namespace tool {

// What a load has done, in numbers.
struct LoadTotals {
    std::uint64_t read = 0;         // records found in the sources
    std::uint64_t created = 0;      // records made
    std::uint64_t updated = 0;      // records changed
    std::uint64_t rejected = 0;     // records refused
    std::uint64_t skipped = 0;      // records that the journal knows as loaded
    std::uint64_t history = 0;      // history entries written
    std::uint64_t attachments = 0;  // attachments stored
    std::uint64_t duplicates = 0;   // duplicate marks set
    double seconds = 0;             // time it took
};

// One rejection, as the report lists it.
struct ReportedReject {
    std::string file;          // name of the source
    std::uint64_t record = 0;  // number of the record in the source, from 1
    std::string sourceId;      // the record's original id, empty when it cannot be made out
    std::string error;
};

// Writes a load's report as JSON: an object of the totals, in the order of LoadTotals, and
// "rejects", a list of objects with "file", "record", "source_id" and "error". That of a rehearsal
// has "losses" as well, objects with "kind", "file", "record", "line", "source_id", "field" and
// "text".
//
// See ListReport for how the file comes into being and what its operations throw.
class ReportWriter {
  public:
    enum class Lists { Rejects, RejectsAndLosses };

    // A place that cannot be written shows before the load.
    explicit ReportWriter(const std::filesystem::path& path, Lists lists = Lists::Rejects);

    void AddReject(const ReportedReject& reject);
    // For a report with Lists::RejectsAndLosses.
    void AddLoss(const Loss& loss);

    // Writes the report to its path. To be called once; nothing may be added afterwards.
    void Finish(const LoadTotals& totals);

  private:
    Lists m_which;
    ListReport m_lists;
};

// The totals as the members of a JSON object, without its braces: "\"read\":1,...".
std::string TotalsAsJson(const LoadTotals& totals);

}  // namespace tool

#endif
