#include <fmt/format.h>

#include "tool/html/attachment_words.h"
#include "tool/html/verify_page.h"
#include "tool/text/number_text.h"

namespace tool {

PageVerdict VerdictOf(const VerifyFindings& findings) {
    const VerifySummary& summary = findings.Summary();
    const std::uint64_t bad = summary.differing + summary.missing;
    if (summary.Verified() && summary.read == 0) {
        return {VerdictTone::Attention, "Nothing to verify", "The sources hold no records.", ""};
    }
    if (summary.Verified() && summary.leftOut > 0) {
        return {VerdictTone::Good, "Verified", summary.Verdict(), ""};
    }
    if (summary.Verified()) {
        return {VerdictTone::Good, "Verified",
                fmt::format("Everything that the sources say of {} is in the database{}.",
                            CountOf(summary.compared, "record"),
                            summary.exact ? ", and nothing else" : ""),
                ""};
    }
    if (summary.extra > 0 && summary.extra == summary.differences) {
        return {VerdictTone::Bad, "Not verified",
                fmt::format("{} of the database {} in no source.", CountOf(summary.extra, "record"),
                            summary.extra == 1 ? "is" : "are"),
                ""};
    }
    if (summary.differences == 0) {
        return {VerdictTone::Bad, "Not verified",
                fmt::format("The database itself is damaged: {} found.",
                            summary.faults == 1 ? "one fault was"
                                                : Grouped(summary.faults) + " faults were"),
                ""};
    }
    if (bad == 0) {
        return {VerdictTone::Bad, "Not verified",
                fmt::format("{} found between the sources and the database.",
                            summary.differences == 1
                                ? "One difference was"
                                : Grouped(summary.differences) + " differences were"),
                ""};
    }
    return {
        VerdictTone::Bad, "Not verified",
        fmt::format("{} of {} {} not in the database as the sources say.", Grouped(bad),
                    CountOf(summary.compared + summary.missing, "record"), bad == 1 ? "is" : "are"),
        ""};
}

std::vector<NextStep> NextSteps(const VerifyFindings& findings) {
    const VerifyOptions& options = findings.Options();
    const VerifySummary& summary = findings.Summary();
    std::vector<NextStep> steps;
    if (summary.missing > 0) {
        NextStep load = {
            "Load what is missing. What is in the database already is passed over; what is "
            "rejected is set aside in a folder, with the reason.",
            {"ztimport", "load", options.database}};
        load.command.insert(load.command.end(), options.sources.begin(), options.sources.end());
        AddAttachmentWords(options.attachments, options.maxAttachmentSize, load.command);
        load.command.insert(load.command.end(), {"--retry-rejected", "--rejects", "rejects"});
        steps.push_back(std::move(load));
    }
    if (const Difference& different = findings.FirstDifferent(); !different.id.empty()) {
        steps.push_back(
            {"Look at records that differ, and find out who changed them since the load.",
             {"ztimport", "show", options.database, different.type, different.id}});
    }
    return steps;
}

}  // namespace tool
