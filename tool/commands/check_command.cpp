#include "tool/commands/check_command.h"

#include "tool/commands/load_run.h"
#include "tool/commands/load_workers.h"
#include "tool/report/check_terminal.h"
#include "tool/report/load_report.h"

namespace tool {

int RunCheck(const LoadOptions& asked, std::ostream& out, std::ostream& err) {
    LoadOptions options = asked;
    const Rehearsal policy;
    options.workers = WorkersFor(asked, policy);
    return RunLoadOfKind(
        {.command = "check",
         .policy = policy,
         .openTerminal = [](const LoadOptions& check, std::uint64_t totalBytes,
                            std::ostream& result, std::ostream& rest) -> std::unique_ptr<LoadSink> {
             return std::make_unique<CheckTerminal>(check, totalBytes, result, rest);
         },
         .openReport = [](const std::filesystem::path& path) -> std::unique_ptr<LoadSink> {
             return std::make_unique<CheckReport>(path);
         }},
        options, out, err);
}

}  // namespace tool
