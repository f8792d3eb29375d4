#include "tool/html/load_page.h"

#include <fmt/format.h>

#include "tool/html/html_text.h"
#include "tool/html/load_verdict.h"
#include "tool/html/page_parts.h"
#include "tool/html/rate_chart.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

PageFacts FactsOf(const RunSummary& summary) {
    const RunDescription& run = summary.Description();
    return {
        TitleFor(summary.Rehearsed() ? "Check of a load into" : "Load into", run.options.database),
        run.command,
        run.options.database,
        run.options.sources,
        run.start,
        summary.Totals().seconds,
        run.version};
}

std::string WaitedNote(const LoadTotals& totals) {
    if (totals.waited == 0) {
        return "";
    }
    return fmt::format(
        "<p class=\"note\">{} waited for others, which came later in the sources, and {} tried "
        "again when these were there.</p>\n",
        CountOf(totals.waited, "record"), totals.waited == 1 ? "was" : "were");
}

std::string TotalsSection(const RunSummary& summary) {
    const LoadTotals& totals = summary.Totals();
    const std::string note =
        summary.Rehearsed()
            ? "<p class=\"note\">This was a rehearsal: these are the numbers that a load would "
              "have, and nothing of it was kept.</p>\n"
            : "";
    return PageSection("totals", "Totals",
                       note +
                           FigureRow({{"records read", totals.read},
                                      {"created", totals.created},
                                      {"updated", totals.updated},
                                      {"rejected", totals.rejected, true},
                                      {"skipped", totals.skipped}}) +
                           FigureRow({{"history entries", totals.history},
                                      {"attachments", totals.attachments},
                                      {"duplicate marks", totals.duplicates}},
                                     true) +
                           WaitedNote(totals));
}

std::string TypesSection(const RunSummary& summary) {
    const std::string note =
        summary.Totals().skipped == 0
            ? ""
            : "<p class=\"note\">Skipped: loaded before, or passed over by the importer because "
              "there was nothing to import in them.</p>\n";
    return PageSection(
        "types", "By record type",
        TypesTable(summary.Rehearsed() ? "What the packets of each record type would do"
                                       : "What the packets of each record type did",
                   summary.Types(), summary.Totals()) +
            note);
}

std::string RejectsSection(const RunSummary& summary) {
    const std::uint64_t rejected = summary.Totals().rejected;
    const std::string_view verb = summary.Rehearsed() ? "would be rejected"
                                  : rejected == 1     ? "was rejected"
                                                      : "were rejected";
    if (rejected == 0) {
        return PageSection("rejects", "Rejected records",
                           fmt::format("<p>No record {}.</p>\n",
                                       summary.Rehearsed() ? "would be rejected" : "was rejected"));
    }
    const auto causes = summary.Causes();
    std::string content = fmt::format("<p>{} {}, for {}.</p>\n", CountOf(rejected, "record"), verb,
                                      CountOf(causes.size(), "cause"));
    for (const ExampleGroup& cause : causes) {
        content += GroupHtml(cause, rejected, "Reason");
    }
    return PageSection("rejects", "Rejected records", content);
}

std::string LossesSection(const RunSummary& summary) {
    const std::uint64_t losses = summary.LossCount();
    std::string content =
        "<p>What the rules for packets drop or change without an error, so that no record is "
        "rejected for it.</p>\n";
    if (losses == 0) {
        content += fmt::format("<p>The {} looked for them and found none.</p>\n",
                               summary.Rehearsed() ? "rehearsal" : "load");
    }
    for (const auto& [kind, group] : summary.Losses()) {
        content += GroupHtml(group, losses, "What is lost");
    }
    return PageSection("losses", "Silent losses", content);
}

}  // namespace

std::string LoadPage(const RunSummary& summary) {
    const PageFacts facts = FactsOf(summary);
    return PageDocument(facts, VerdictOf(summary),
                        TotalsSection(summary) + StepsSection(NextSteps(summary)) +
                            TypesSection(summary) + RejectsSection(summary) +
                            LossesSection(summary) + summary.Findings().SectionHtml() +
                            PageSection("rate", "Records over time",
                                        RateChart(summary.Rate(), summary.AverageRate())) +
                            FactsSection(facts));
}

}  // namespace tool
