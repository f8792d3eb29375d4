#include "tool/html/run_verdict.h"

#include <fmt/format.h>

#include "tool/html/number_text.h"

namespace tool {

namespace {

bool DidNothing(const RunSummary& summary) {
    const LoadTotals& totals = summary.Totals();
    return totals.created + totals.updated + totals.history + totals.attachments +
                   totals.duplicates ==
               0 &&
           totals.read > summary.LoadedBefore();
}

std::string_view IsOrAre(std::uint64_t number) {
    return number == 1 ? "is" : "are";
}

RunVerdict EndedEarly(const RunSummary& summary) {
    return {
        VerdictTone::Bad, "Not finished",
        fmt::format("The load ended before all sources were read: {} read, {} rejected.",
                    CountOf(summary.Totals().read, "record"), Grouped(summary.Totals().rejected))};
}

RunVerdict RejectsRemain(const RunSummary& summary) {
    const std::uint64_t rejected = summary.Totals().rejected;
    const std::uint64_t before = summary.RejectedBefore();
    std::string sentence;
    if (rejected > 0) {
        sentence = fmt::format("{} of {} {} rejected, and nothing of {} is in the database",
                               Grouped(rejected), CountOf(summary.Totals().read, "record"),
                               rejected == 1 ? "was" : "were", rejected == 1 ? "it" : "them");
    }
    if (before > 0) {
        sentence +=
            fmt::format("{}{} that an earlier load rejected {} still missing",
                        sentence.empty() ? "" : "; ", CountOf(before, "record"), IsOrAre(before));
    }
    return {VerdictTone::Attention, "Rejected records remain", sentence + "."};
}

RunVerdict Complete(const RunSummary& summary) {
    const LoadTotals& totals = summary.Totals();
    if (summary.LoadedBefore() == totals.read) {
        return {VerdictTone::Good, "Complete",
                fmt::format("{} been loaded before, so nothing was left to do.",
                            totals.read == 1
                                ? "The one record has"
                                : fmt::format("All {} records have", Grouped(totals.read)))};
    }
    return {VerdictTone::Good, "Complete",
            totals.read == 1
                ? "The one record of the sources was loaded."
                : fmt::format("All {} records of the sources were loaded; none was rejected.",
                              Grouped(totals.read))};
}

}  // namespace

RunVerdict VerdictOf(const RunSummary& summary) {
    if (!summary.EarlyEnd().empty()) {
        return EndedEarly(summary);
    }
    if (summary.Totals().rejected > 0 || summary.RejectedBefore() > 0) {
        return RejectsRemain(summary);
    }
    if (summary.Totals().read == 0) {
        return {VerdictTone::Attention, "Nothing to load", "The sources hold no records."};
    }
    if (DidNothing(summary)) {
        return {VerdictTone::Attention, "Nothing imported",
                fmt::format("{} read, and the importer passed over every one of them.",
                            summary.Totals().read == 1
                                ? "One record was"
                                : fmt::format("{} records were", Grouped(summary.Totals().read)))};
    }
    if (const std::uint64_t losses = summary.LossCount()) {
        return {VerdictTone::Attention, "Loaded with losses",
                fmt::format("No record was rejected, but {} of the sources {} not imported as {}.",
                            CountOf(losses, "detail"), losses == 1 ? "was" : "were",
                            losses == 1 ? "it stands" : "they stand")};
    }
    return Complete(summary);
}

}  // namespace tool
