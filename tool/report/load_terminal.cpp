#include "tool/report/load_terminal.h"

#include <fmt/format.h>
#include <unistd.h>

#include "tool/report/loss_log.h"
#include "tool/report/run_words.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

// A load that rejects everything must not bury what else it says.
constexpr std::uint64_t kShownRejects = 20;

std::string PlaceOf(const RejectedRecord& record) {
    const std::string id = record.sourceId.empty() ? "" : fmt::format(" ({})", record.sourceId);
    return fmt::format("{}, {} {}{}, line {}", record.source, record.unit, record.number, id,
                       record.line);
}

}  // namespace

LoadTerminal::LoadTerminal(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                           std::ostream& err)
    : LoadTerminal(options, totalBytes, out, err,
                   {.would = "", .whereToFind = "--rejects and --report list all"}) {}

LoadTerminal::LoadTerminal(const LoadOptions& options, std::uint64_t totalBytes, std::ostream& out,
                           std::ostream& err, Words words)
    : m_quiet(options.quiet),
      m_map(options.map),
      m_rejectsFolder(options.rejects),
      m_out(out),
      m_progress(err, ChooseProgressStyle(options.quiet, STDERR_FILENO), totalBytes),
      m_words(words) {}

void LoadTerminal::Says(std::string_view line) {
    if (!m_quiet) {
        m_progress.Print(line);
    }
}

void LoadTerminal::Warns(std::string_view line) {
    m_progress.Print(line);
}

void LoadTerminal::Finds(const MapFinding& finding) {
    if (finding.weight == FindingWeight::Count) {
        Says(finding.text);
    } else if (finding.weight == FindingWeight::Note) {
        Warns("note: " + finding.text);
    }
    if (!finding.paste.empty()) {
        m_pastes.push_back(PasteText(finding, m_map));
    }
}

void LoadTerminal::Rejects(const RejectedRecord& record) {
    ++m_rejected;
    if (m_rejected <= kShownRejects) {
        Warns(fmt::format("{}rejected: {}: {}", m_words.would, PlaceOf(record), record.reason));
    } else if (m_rejected == kShownRejects + 1) {
        Warns(fmt::format("{}rejected: further records are counted; {}", m_words.would,
                          m_words.whereToFind));
    }
}

void LoadTerminal::Loses(const Loss& loss) {
    if (!IsToldByEveryLoad(loss.kind)) {
        return;
    }
    const std::uint64_t count = ++m_warned[loss.kind];
    if (count <= LossLog::kShownOfEachKind) {
        Warns(fmt::format("warning: {}: {}", PlaceOf(loss), loss.text));
    } else if (count == LossLog::kShownOfEachKind + 1) {
        Warns(
            fmt::format("warning: further {} are not shown; \"ztimport check --report\" lists all",
                        LossKindTitle(loss.kind)));
    }
}

void LoadTerminal::Advances(const LoadTotals& soFar, std::uint64_t bytes) {
    m_progress.Update(soFar.read, bytes);
}

void LoadTerminal::Ends() {
    for (const std::string& paste : m_pastes) {
        Says(paste);
    }
    m_progress.Finish();
}

void LoadTerminal::Finish(const LoadTotals& totals) {
    if (m_quiet) {
        return;
    }
    m_out << TotalsText(totals, m_words.would) << Outcome(totals);
    if (!m_rejectsFolder.empty() && totals.rejected > 0) {
        m_out << fmt::format("The rejected records are in {}; mend them and load that folder.\n",
                             VisibleText(m_rejectsFolder.string()));
    }
}

std::string LoadTerminal::Outcome(const LoadTotals& /*totals*/) const {
    return {};
}

}  // namespace tool
