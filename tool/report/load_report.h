#ifndef TOOL_REPORT_LOAD_REPORT_H
#define TOOL_REPORT_LOAD_REPORT_H

#include <cstddef>
#include <filesystem>
#include <string>

#include "tool/load/load_sink.h"
#include "tool/report/list_report.h"

namespace tool {

// Writes a load's report as JSON: an object of the totals, in the order of LoadTotals, and
// "rejects", a list of objects with "file", "record", "source_id" and "error".
//
// See ListReport for how the file comes into being and what its operations throw.
class LoadReport : public LoadSink {
  public:
    // A place that cannot be written shows before the load.
    explicit LoadReport(const std::filesystem::path& path) : LoadReport(path, 1) {}

    void Rejects(const RejectedRecord& record) override;

    // Writes the report to its path. To be called once; nothing may be added afterwards.
    void Finish(const LoadTotals& totals) override;

  protected:
    // A report with further lists after the rejects.
    LoadReport(const std::filesystem::path& path, std::size_t lists) : m_lists(path, lists) {}

    // The beginning of the report, up to where the first list begins.
    static std::string HeadOf(const LoadTotals& totals);

    ListReport& Lists() { return m_lists; }

  private:
    ListReport m_lists;
};

// Writes the report of a rehearsal: that of a load with "losses" besides, a list of objects with
// "kind", "file", "record", "line", "source_id", "field" and "text".
class CheckReport final : public LoadReport {
  public:
    explicit CheckReport(const std::filesystem::path& path) : LoadReport(path, 2) {}

    void Loses(const Loss& loss) override;
    void Finish(const LoadTotals& totals) override;
};

}  // namespace tool

#endif
