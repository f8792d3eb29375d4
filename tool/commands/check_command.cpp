#include "tool/commands/check_command.h"

#include "tool/commands/load_run.h"
#include "tool/report/check_terminal.h"
#include "tool/report/load_report.h"

namespace tool {

int RunCheck(const LoadOptions& options, std::ostream& out, std::ostream& err) {
    const Rehearsal policy;
    return RunLoadOfKind(
        {.command = "check",
         .policy = policy,
         .openTerminal = [](const LoadOptions& asked, std::uint64_t totalBytes,
                            std::ostream& result, std::ostream& rest) -> std::unique_ptr<LoadSink> {
             return std::make_unique<CheckTerminal>(asked, totalBytes, result, rest);
         },
         .openReport = [](const std::filesystem::path& path) -> std::unique_ptr<LoadSink> {
             return std::make_unique<CheckReport>(path);
         }},
        options, out, err);
}

}  // namespace tool
