#include "tool/html/attachment_words.h"
#include "tool/html/load_verdict.h"

namespace tool {

namespace {

// The command `name` on `sources`, with the database and the folder of attachments of the run.
std::vector<std::string> CommandOn(std::string_view name, const LoadOptions& options,
                                   const std::vector<std::string>& sources,
                                   const std::vector<std::string>& more = {}) {
    std::vector<std::string> words = {"ztimport", std::string(name), options.database};
    words.insert(words.end(), sources.begin(), sources.end());
    AddAttachmentWords(options.attachments, options.maxAttachmentSize, words);
    words.insert(words.end(), more.begin(), more.end());
    return words;
}

NextStep LookAtLosses() {
    return {"Look through the silent losses, and decide for each kind whether it matters.", {}};
}

void AddStepsForRejects(const RunSummary& summary, std::vector<NextStep>& steps) {
    const LoadOptions& options = summary.Description().options;
    if (!options.rejects.empty() && summary.Totals().rejected > 0) {
        const std::string folder = options.rejects.string();
        steps.push_back(
            {"Mend the records in the folder " + folder +
                 ". Each stands there under a comment that names its place and the reason.",
             {}});
        steps.push_back({"Load that folder.",
                         CommandOn("load", options, {folder}, {"--rejects", folder + "-again"})});
        return;
    }
    steps.push_back(
        {"Set the rejected records aside in a folder, where they can be mended and loaded.",
         CommandOn("load", options, options.sources,
                   {"--retry-rejected", "--rejects", "rejects"})});
}

std::vector<NextStep> StepsAfterCheck(const RunSummary& summary) {
    const LoadOptions& options = summary.Description().options;
    std::vector<NextStep> steps;
    if (summary.Totals().rejected > 0) {
        steps.push_back({"Mend the sources where records would be rejected.", {}});
    }
    if (summary.LossCount() > 0) {
        steps.push_back(LookAtLosses());
    }
    if (!steps.empty() || !summary.EarlyEnd().empty()) {
        steps.push_back({"Check again.", CommandOn("check", options, options.sources)});
    }
    steps.push_back({steps.empty() ? "Load the sources."
                                   : "Load the sources, and set aside what is rejected all the "
                                     "same.",
                     CommandOn("load", options, options.sources, {"--rejects", "rejects"})});
    return steps;
}

}  // namespace

std::vector<NextStep> NextSteps(const RunSummary& summary) {
    if (summary.Rehearsed()) {
        return StepsAfterCheck(summary);
    }
    const LoadOptions& options = summary.Description().options;
    std::vector<NextStep> steps;
    if (!summary.EarlyEnd().empty()) {
        steps.push_back({"Start the same load again: it goes on where this one ended.",
                         CommandOn("load", options, options.sources)});
    }
    if (summary.Totals().rejected > 0 || summary.RejectedBefore() > 0) {
        AddStepsForRejects(summary, steps);
    }
    if (summary.LossCount() > 0) {
        steps.push_back(LookAtLosses());
    }
    if (steps.empty() && summary.Totals().read > 0) {
        steps.push_back({"Compare the database with the sources, field by field.",
                         CommandOn("verify", options, options.sources)});
    }
    return steps;
}

}  // namespace tool
