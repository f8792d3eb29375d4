#ifndef TOOL_REPORT_VERIFY_TERMINAL_H
#define TOOL_REPORT_VERIFY_TERMINAL_H

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "tool/report/progress.h"
#include "tool/verify/sinks/verify_sink.h"

namespace tool {

// What a comparison shows on the terminal: progress, differences, and in the end the numbers and
// the verdict. A stage begins before anything else is reported.
class VerifyTerminal final : public VerifySink {
  public:
    // `out` gets the result, `err` the progress and the differences; both stay the caller's.
    // `quiet` leaves the differences only; `map` is the name of the map, for what it lacks.
    VerifyTerminal(bool quiet, std::string map, std::ostream& out, std::ostream& err);

    void Begins(std::uint64_t total) override;
    void Advances(std::uint64_t records, std::uint64_t done) override;
    void Warns(std::string_view line) override;
    void Finds(const MapFinding& finding) override;
    void IsFaulty(const recorddb::Fault& fault) override;
    void Differs(const Difference& difference) override;
    // Ends the progress, and shows the numbers and the verdict.
    void Finish(const VerifySummary& summary) override;

  private:
    bool m_quiet;
    std::string m_map;
    std::ostream& m_out;
    std::ostream& m_err;
    std::optional<Progress> m_progress;
    std::uint64_t m_differences = 0;
    std::uint64_t m_faults = 0;
    std::vector<std::string> m_pastes;  // what is to be told at the end, where it is found again
};

// A difference in one line, such as
// "b.xml, record 17 (core-25), line 412: bug BUG00000017, title: source \"A\", database \"B\"".
std::string DescribeDifference(const Difference& difference);

// A fault in one line, such as "bug BUG00000017, votes: \"many\" (stored as a text, where a whole
// number belongs)".
std::string DescribeFault(const recorddb::Fault& fault);

}  // namespace tool

#endif
