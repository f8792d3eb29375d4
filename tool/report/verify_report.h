#ifndef TOOL_REPORT_VERIFY_REPORT_H
#define TOOL_REPORT_VERIFY_REPORT_H

#include <filesystem>

#include "tool/report/list_report.h"
#include "tool/verify/sinks/verify_sink.h"

namespace tool {

// Writes a comparison's report as JSON: an object of "read", "compared", "differing", "missing",
// "extra", "seconds", "types", a list of objects in the manner of VerifiedType, "differences", a
// list of objects with "file", "record", "line", "source_id", "type", "id", "field", "source",
// "database", "problem", and "faults", a list of objects with "type", "id", "field", "database",
// "problem". Where "record" counts something else, "unit" says what: rows, say. What a map found
// stands in "findings".
//
// See ListReport for how the file comes into being and what its operations throw.
class VerifyReport final : public VerifySink {
  public:
    // A place that cannot be written shows before the comparison.
    explicit VerifyReport(const std::filesystem::path& path) : m_lists(path, 3) {}

    void Finds(const MapFinding& finding) override;
    void IsFaulty(const recorddb::Fault& fault) override;
    void Differs(const Difference& difference) override;
    void Finish(const VerifySummary& summary) override;

  private:
    ListReport m_lists;
    bool m_hasFindings = false;
};

}  // namespace tool

#endif
