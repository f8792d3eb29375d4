#include "tool/commands/verify_command.h"

#include <optional>
#include <utility>
#include <vector>

#include "recorddb/database.h"
#include "tool/commands/output_guard.h"
#include "tool/html/html_verify_report.h"
#include "tool/process/exit_code.h"
#include "tool/process/interrupt.h"
#include "tool/report/verify_report.h"
#include "tool/report/verify_terminal.h"
#include "tool/sources/source_checks.h"
#include "tool/sources/source_list.h"
#include "tool/verify/verifier.h"
#include "tool/verify/verify_sinks.h"

namespace tool {

int RunVerify(const VerifyOptions& options, std::ostream& out, std::ostream& err) {
    RequireFolder(options.attachments);
    const SourceList sources(options.sources);
    CheckOutputs(options, sources);
    const auto database = recorddb::Database::Open(
        options.database, options.immutable ? recorddb::Database::Mode::Immutable
                                            : recorddb::Database::Mode::ReadOnly);
    VerifyTerminal terminal(options.quiet, out, err);
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
    Verifier verifier(*database, options, output);
    const VerifySummary summary = verifier.Run(sources);
    if (const int signal = Interrupted()) {
        terminal.Warns("Stopped before the end, so nothing is known of the rest; verify again.");
        return 128 + signal;
    }
    output.Finish(summary);
    return static_cast<int>(summary.Verified() ? ExitCode::Success : ExitCode::RecordsDiffer);
}

}  // namespace tool
