#ifndef TOOL_REPORT_VERIFY_OUTPUT_H
#define TOOL_REPORT_VERIFY_OUTPUT_H

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tool/report/progress.h"
#include "tool/verify/verify_sink.h"

namespace tool {

// What a comparison shows on the terminal: progress, differences, and in the end the numbers and
// the verdict. Passes everything on to further sinks.
class VerifyOutput final : public VerifySink {
  public:
    // OUT gets the result, ERR the progress and the differences; both stay the caller's. QUIET
    // leaves the differences only.
    VerifyOutput(bool quiet, std::ostream& out, std::ostream& err);

    // SINK stays the caller's.
    void Add(VerifySink& sink) { m_sinks.push_back(&sink); }

    // Begin the stages of the work; the last two are as long as they are told here.
    void BeginChecking();
    void BeginReading(std::uint64_t totalBytes);
    void BeginComparing(std::uint64_t records);

    // How far the stage is: in bytes while reading, in records otherwise.
    void Advance(std::uint64_t records, std::uint64_t done);

    // A line that is shown in any case.
    void Warn(std::string_view line);

    void IsFaulty(const recorddb::Fault& fault) override;
    void Reads(const DataSource& source) override;
    void Differs(const Difference& difference) override;
    void Finish(const VerifySummary& summary) override;

    // The differences told so far.
    std::uint64_t Count() const { return m_count; }

  private:
    void Begin(std::uint64_t total);

    bool m_quiet;
    std::ostream& m_out;
    std::ostream& m_err;
    std::optional<Progress> m_progress;
    std::vector<VerifySink*> m_sinks;
    std::uint64_t m_count = 0;
    std::uint64_t m_faults = 0;
};

// A difference in one line, such as
// "b.xml, record 17 (core-25), line 412: bug BUG00000017, title: source \"A\", database \"B\"".
std::string DescribeDifference(const Difference& difference);

// A fault in one line, such as "bug BUG00000017, votes: \"many\" (stored as a text, where a whole
// number belongs)".
std::string DescribeFault(const recorddb::Fault& fault);

}  // namespace tool

#endif
