#include "tool/commands/load_command.h"

#include "tool/commands/load_run.h"
#include "tool/commands/load_workers.h"
#include "tool/report/load_report.h"
#include "tool/report/load_terminal.h"

namespace tool {

int RunLoad(const LoadOptions& asked, std::ostream& out, std::ostream& err) {
    LoadOptions options = asked;
    const PermanentLoad policy;
    options.workers = WorkersFor(asked, policy);
    return RunLoadOfKind(
        {.command = "load",
         .policy = policy,
         .openTerminal = [](const LoadOptions& load, std::uint64_t totalBytes, std::ostream& result,
                            std::ostream& rest) -> std::unique_ptr<LoadSink> {
             return std::make_unique<LoadTerminal>(load, totalBytes, result, rest);
         },
         .openReport = [](const std::filesystem::path& path) -> std::unique_ptr<LoadSink> {
             return std::make_unique<LoadReport>(path);
         }},
        options, out, err);
}

}  // namespace tool
