#include "tool/html/load_verdict.h"

#include <fmt/format.h>

#include "tool/text/number_text.h"

namespace tool {

namespace {

bool DidNothing(const RunSummary& summary) {
    const LoadTotals& totals = summary.Totals();
    return totals.created + totals.updated + totals.history + totals.attachments +
                   totals.duplicates ==
               0 &&
           totals.read > summary.LoadedBefore();
}

std::string_view One(std::uint64_t number, std::string_view one, std::string_view many) {
    return number == 1 ? one : many;
}

PageVerdict EndedEarly(const RunSummary& summary) {
    return {VerdictTone::Bad, "Not finished",
            fmt::format("The {} ended before all sources were read: {} read, {} rejected.",
                        summary.Description().command, CountOf(summary.Totals().read, "record"),
                        Grouped(summary.Totals().rejected)),
            summary.EarlyEnd()};
}

std::string RejectedBefore(std::uint64_t records) {
    return fmt::format("{} that an earlier load rejected {} still missing",
                       CountOf(records, "record"), One(records, "is", "are"));
}

PageVerdict RejectsRemain(const RunSummary& summary) {
    const std::uint64_t rejected = summary.Totals().rejected;
    std::string sentence;
    if (rejected > 0) {
        sentence = fmt::format("{} of {} {} rejected, and nothing of {} is in the database",
                               Grouped(rejected), CountOf(summary.Totals().read, "record"),
                               One(rejected, "was", "were"), One(rejected, "it", "them"));
    }
    if (summary.RejectedBefore() > 0) {
        sentence += (sentence.empty() ? "" : "; ") + RejectedBefore(summary.RejectedBefore());
    }
    return {VerdictTone::Attention, "Rejected records remain", sentence + ".", ""};
}

// A rehearsal in which something went wrong.
PageVerdict WouldGoWrong(const RunSummary& summary) {
    const std::uint64_t rejected = summary.Totals().rejected;
    const std::uint64_t losses = summary.LossCount();
    std::string sentence;
    if (rejected > 0) {
        sentence = fmt::format("A load would reject {} of {}", Grouped(rejected),
                               CountOf(summary.Totals().read, "record"));
    }
    if (losses > 0) {
        sentence += fmt::format("{}lose {} silently", sentence.empty() ? "A load would " : " and ",
                                CountOf(losses, "detail"));
    }
    if (summary.RejectedBefore() > 0) {
        sentence += (sentence.empty() ? "" : "; ") + RejectedBefore(summary.RejectedBefore());
    }
    return {VerdictTone::Attention, losses > 0 ? "Would lose data" : "Would reject records",
            sentence + ".", ""};
}

PageVerdict Lossy(const RunSummary& summary) {
    const std::uint64_t losses = summary.LossCount();
    return {VerdictTone::Attention, "Loaded with losses",
            fmt::format("No record was rejected, but {} of the sources {} not imported as {}.",
                        CountOf(losses, "detail"), One(losses, "was", "were"),
                        One(losses, "it stands", "they stand")),
            ""};
}

std::string AllRecords(std::uint64_t read) {
    return read == 1 ? "The one record" : fmt::format("All {} records", Grouped(read));
}

PageVerdict Complete(const RunSummary& summary) {
    const std::uint64_t read = summary.Totals().read;
    std::string sentence;
    if (summary.LoadedBefore() == read) {
        sentence =
            fmt::format("{} {} been loaded before, so nothing {} left to do.", AllRecords(read),
                        One(read, "has", "have"), summary.Rehearsed() ? "is" : "was");
    } else if (summary.Rehearsed()) {
        sentence = AllRecords(read) +
                   " of the sources would be loaded; none would be rejected, and nothing lost.";
    } else {
        sentence = fmt::format("{} of the sources {} loaded; none was rejected.", AllRecords(read),
                               One(read, "was", "were"));
    }
    return {VerdictTone::Good, summary.Rehearsed() ? "Would load completely" : "Complete", sentence,
            ""};
}

}  // namespace

PageVerdict VerdictOf(const RunSummary& summary) {
    const std::uint64_t read = summary.Totals().read;
    const bool rejects = summary.Totals().rejected > 0 || summary.RejectedBefore() > 0;
    if (!summary.EarlyEnd().empty()) {
        return EndedEarly(summary);
    }
    if (summary.Rehearsed() && (rejects || summary.LossCount() > 0)) {
        return WouldGoWrong(summary);
    }
    if (rejects) {
        return RejectsRemain(summary);
    }
    if (read == 0) {
        return {VerdictTone::Attention, "Nothing to load", "The sources hold no records.", ""};
    }
    if (DidNothing(summary)) {
        return {VerdictTone::Attention, "Nothing imported",
                fmt::format("{} {} read, and the importer passed over every one of them.",
                            CountOf(read, "record"), One(read, "was", "were")),
                ""};
    }
    return summary.LossCount() > 0 ? Lossy(summary) : Complete(summary);
}

}  // namespace tool
