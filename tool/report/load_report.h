#ifndef TOOL_REPORT_LOAD_REPORT_H
#define TOOL_REPORT_LOAD_REPORT_H

#include <filesystem>
#include <string_view>

#include "tool/load/sinks/load_sink.h"
#include "tool/report/list_report.h"

namespace tool {

// Writes a load's report as JSON: an object of the totals, in the order of LoadTotals, and
// "rejects", a list of objects with "file", "record", "source_id" and "error", and "warnings", a
// list of objects with "kind", "file", "record", "line", "source_id", "field" and "text". Where
// "record" counts something else, "unit" says what: rows, say. What a map found stands in
// "findings".
//
// See ListReport for how the file comes into being and what its operations throw.
class LoadReport : public LoadSink {
  public:
    // A place that cannot be written shows before the load.
    explicit LoadReport(const std::filesystem::path& path) : LoadReport(path, "warnings") {}

    void Finds(const MapFinding& finding) override;
    void Rejects(const RejectedRecord& record) override;
    void Loses(const Loss& loss) override;

    // Writes the report to its path. To be called once; nothing may be added afterwards.
    void Finish(const LoadTotals& totals) override;

  protected:
    // A report whose list of losses has a name, which is a constant.
    LoadReport(const std::filesystem::path& path, std::string_view lossesName)
        : m_lists(path, 3), m_lossesName(lossesName) {}

    void List(const Loss& loss);

  private:
    ListReport m_lists;
    std::string_view m_lossesName;
    bool m_hasFindings = false;
};

// Writes the report of a rehearsal, which has all losses, as "losses", in the place of warnings.
class CheckReport final : public LoadReport {
  public:
    explicit CheckReport(const std::filesystem::path& path) : LoadReport(path, "losses") {}

    void Loses(const Loss& loss) override { List(loss); }
};

}  // namespace tool

#endif
