#include "tool/report/check_terminal.h"

#include "tool/report/run_words.h"

namespace tool {

CheckTerminal::CheckTerminal(const LoadOptions& options, std::uint64_t totalBytes,
                             std::ostream& out, std::ostream& err)
    : LoadTerminal(options, totalBytes, out, err,
                   {.would = "would be ", .whereToFind = "--report lists all"}) {}

void CheckTerminal::Loses(const Loss& loss) {
    if (const auto line = m_losses.Add(loss)) {
        Warns(*line);
    }
}

std::string CheckTerminal::Outcome(const LoadTotals& totals) const {
    return m_losses.Summary() + Verdict({totals.rejected, m_rejectedBefore, m_complete}, m_losses) +
           "\n";
}

}  // namespace tool
