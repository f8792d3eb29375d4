#include "tool/verify/sinks/verify_summary.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "tool/text/number_text.h"

namespace tool {

void Add(VerifiedType& type, const VerifiedType& more) {
    type.compared += more.compared;
    type.equal += more.equal;
    type.different += more.different;
    type.missing += more.missing;
    type.extra += more.extra;
    type.fields += more.fields;
    type.references += more.references;
    type.history += more.history;
    type.attachments += more.attachments;
    type.duplicates += more.duplicates;
}

std::string VerifySummary::Verdict() const {
    if (Verified() && leftOut > 0) {
        return fmt::format(
            "Verified but for {} left out by the map: everything else in the "
            "sources is in the database{}.",
            CountOf(leftOut, "value"), exact ? ", and nothing else" : "");
    }
    if (Verified()) {
        return exact ? "Verified: everything in the sources is in the database, and nothing else."
                     : "Verified: everything in the sources is in the database.";
    }
    std::vector<std::string> findings;
    if (const std::uint64_t bad = differing + missing; bad > 0) {
        findings.push_back(fmt::format("{} of {} {}", Grouped(bad),
                                       CountOf(compared + missing, "record"),
                                       bad == 1 ? "differs" : "differ"));
    } else if (differences > extra) {
        findings.push_back(CountOf(differences - extra, "difference") + " found");
    }
    if (extra > 0) {
        findings.push_back(fmt::format("{} of the database {} in no source",
                                       CountOf(extra, "record"), extra == 1 ? "is" : "are"));
    }
    if (faults > 0) {
        findings.push_back(CountOf(faults, "fault") + " in the database itself");
    }
    return fmt::format("NOT verified: {}.", fmt::join(findings, "; "));
}

}  // namespace tool
