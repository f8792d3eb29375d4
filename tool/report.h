#ifndef TOOL_REPORT_H
#define TOOL_REPORT_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "tool/byte_source.h"
#include "tool/output_file.h"

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
// "rejects", a list of objects with "file", "record", "source_id" and "error".
//
// Rejections go to a file without a name as they come, so memory does not grow with their number.
// The report appears at its path complete or not at all, in place of an earlier one.
// All operations throw std::system_error that names the file when something cannot be written.
class ReportWriter {
  public:
    // Makes a file beside PATH, so that a place that cannot be written shows before the load.
    explicit ReportWriter(std::filesystem::path path);
    // Without Finish nothing is left.
    ~ReportWriter();
    ReportWriter(const ReportWriter&) = delete;
    ReportWriter& operator=(const ReportWriter&) = delete;

    void AddReject(const ReportedReject& reject);

    // Writes the report to its path. To be called once; nothing may be added afterwards.
    void Finish(const LoadTotals& totals);

  private:
    // What is written to it can be read back; the directory does not show it.
    struct Spool {
        explicit Spool(const std::filesystem::path& path);
        OutputFile in;
        FileBytes out;
    };

    std::filesystem::path m_path;
    Spool m_rejects;
    OutputFile m_report;
    std::uint64_t m_rejectCount = 0;
    bool m_finished = false;
};

// The totals as the members of a JSON object, without its braces: "\"read\":1,...".
std::string TotalsAsJson(const LoadTotals& totals);

}  // namespace tool

#endif
