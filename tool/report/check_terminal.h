#ifndef TOOL_REPORT_CHECK_TERMINAL_H
#define TOOL_REPORT_CHECK_TERMINAL_H

#include <cstdint>
#include <ostream>
#include <string>

#include "tool/report/load_terminal.h"
#include "tool/report/loss_log.h"

namespace tool {

// What the rehearsal of a load shows on the terminal: the same as for a load, in other words, and
// also what would be lost silently and a verdict.
class CheckTerminal final : public LoadTerminal {
  public:
    // As for LoadTerminal.
    CheckTerminal(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                  std::ostream& err);

    void Loses(const Loss& loss) override;
    void LeavesRejected(std::uint64_t records) override { m_rejectedBefore += records; }
    void EndsEarly(const std::string& /*why*/) override { m_complete = false; }

  private:
    std::string Outcome(const LoadTotals& totals) const override;

    LossLog m_losses;
    std::uint64_t m_rejectedBefore = 0;
    bool m_complete = true;
};

}  // namespace tool

#endif
