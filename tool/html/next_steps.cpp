#include "tool/html/run_verdict.h"
namespace tool {

namespace {

// The command NAME with the database and SOURCES of the run, and the folder of attachments.
std::vector<std::string> CommandOn(std::string_view name, const LoadOptions& options,
                                   const std::vector<std::string>& sources) {
    std::vector<std::string> words = {"ztimport", std::string(name), options.database};
    words.insert(words.end(), sources.begin(), sources.end());
    if (!options.attachments.empty()) {
        words.insert(words.end(), {"--attachments", options.attachments.string()});
    }
    return words;
}

std::vector<std::string> LoadAgain(const LoadOptions& options,
                                   const std::vector<std::string>& more) {
    std::vector<std::string> words = CommandOn("load", options, options.sources);
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

void AddStepsForRejects(const RunSummary& summary, std::vector<NextStep>& steps) {
    const LoadOptions& options = summary.Description().options;
    if (!options.rejects.empty() && summary.Totals().rejected > 0) {
        const std::string folder = options.rejects.string();
        steps.push_back(
            {"Mend the records in the folder " + folder +
                 ". Each stands there under a comment that names its place and the reason.",
             {}});
        std::vector<std::string> words = CommandOn("load", options, {folder});
        words.insert(words.end(), {"--rejects", folder + "-again"});
        steps.push_back({"Load that folder.", words});
        return;
    }
    steps.push_back(
        {"Set the rejected records aside in a folder, where they can be mended and loaded.",
         LoadAgain(options, {"--retry-rejected", "--rejects", "rejects"})});
}

}  // namespace

std::vector<NextStep> NextSteps(const RunSummary& summary) {
    const LoadOptions& options = summary.Description().options;
    std::vector<NextStep> steps;
    if (!summary.EarlyEnd().empty()) {
        steps.push_back({"Start the same load again: it goes on where this one ended.",
                         LoadAgain(options, {})});
    }
    if (summary.Totals().rejected > 0 || summary.RejectedBefore() > 0) {
        AddStepsForRejects(summary, steps);
    }
    if (summary.LossCount() > 0) {
        steps.push_back(
            {"Look through the silent losses, and decide for each kind whether it matters.", {}});
    }
    if (steps.empty() && summary.Totals().read > 0) {
        steps.push_back({"Compare the database with the sources, field by field.",
                         CommandOn("verify", options, options.sources)});
    }
    return steps;
}

}  // namespace tool
