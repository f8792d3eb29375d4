#ifndef TOOL_VERIFY_VERIFY_REPORT_H
#define TOOL_VERIFY_VERIFY_REPORT_H

#include <filesystem>

#include "tool/list_report.h"
#include "tool/verify/verify_sink.h"

namespace tool {

// Writes a comparison's report as JSON: an object of "read", "compared", "differing", "missing",
// "seconds", "types", a list of objects in the manner of VerifiedType, and "differences", a list of
// objects with "file", "record", "line", "source_id", "type", "id", "field", "source", "database",
// "problem".
//
// See ListReport for how the file comes into being and what its operations throw.
class VerifyReport final : public VerifySink {
  public:
    // A place that cannot be written shows before the comparison.
    explicit VerifyReport(const std::filesystem::path& path) : m_list(path) {}

    void Differs(const Difference& difference) override;
    void Finish(const VerifySummary& summary) override;

  private:
    ListReport m_list;
};

}  // namespace tool

#endif
