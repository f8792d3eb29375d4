#include "tool/commands/verify_command.h"

#include <optional>
#include <utility>
#include <vector>

#include "recorddb/database.h"
#include "tool/commands/command_sources.h"
#include "tool/commands/output_guard.h"
#include "tool/html/html_verify_report.h"
#include "tool/process/exit_code.h"
#include "tool/process/interrupt.h"
#include "tool/process/processors.h"
#include "tool/report/verify_report.h"
#include "tool/report/verify_terminal.h"
#include "tool/sources/source_checks.h"
#include "tool/verify/records/lookup_tools.h"
#include "tool/verify/sinks/verify_sinks.h"
#include "tool/verify/verifier.h"

namespace tool {

namespace {

// What the map loses counts as a difference: it cannot be in the database.
void TellFindings(const CommandSources& sources, VerifySinks& sinks) {
    for (const MapFinding& finding : sources.Findings().all) {
        sinks.Finds(finding);
        if (finding.weight == FindingWeight::Loss) {
            Difference difference;
            difference.source = sources.MapName();
            difference.problem = finding.text;
            sinks.Differs(difference);
        }
    }
}

// With small sources, connecting the workers takes longer than comparing everything in one.
VerifyOptions WithWorkers(VerifyOptions options, const SourceList& sources) {
    constexpr std::uint64_t small = std::uint64_t{1} << 20U;
    if (options.workers == 0) {
        options.workers = sources.TotalSize() < small ? 1 : WorkersByDefault();
    }
    return options;
}

}  // namespace

int RunVerify(const VerifyOptions& options, std::ostream& out, std::ostream& err) {
    RequireFolder(options.attachments);
    CommandSources sources(options.sources, options.map);
    CheckOutputs(options, sources.Files());
    const auto database = OpenForVerify(options);
    VerifyTerminal terminal(options.quiet, options.map, out, err);
    std::vector<VerifySink*> sinks = {&terminal};
    std::optional<VerifyReport> report;
    if (!options.report.empty()) {
        sinks.push_back(&report.emplace(options.report));
    }
    std::optional<HtmlVerifyReport> page;
    if (!options.html.empty()) {
        sinks.push_back(&page.emplace(options, database->GetJournal()));
    }
    VerifySinks output(std::move(sinks));
    WatchInterrupts();
    VerifySummary summary;
    output.Begins(0);
    if (sources.Open(*database, options.limits, false)) {
        const VerifyOptions adjusted = WithWorkers(options, sources.List());
        Verifier verifier(*database, adjusted, output);
        TellFindings(sources, output);
        summary = verifier.Run(sources.List());
        summary.leftOut = sources.Findings().ignored;
    }
    if (const int signal = Interrupted()) {
        terminal.Warns("Stopped before the end, so nothing is known of the rest; verify again.");
        return 128 + signal;
    }
    output.Finish(summary);
    return static_cast<int>(summary.Verified() ? ExitCode::Success : ExitCode::Incomplete);
}

}  // namespace tool
