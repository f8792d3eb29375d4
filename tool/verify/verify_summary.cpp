#include "tool/verify/verify_summary.h"

#include <fmt/format.h>

#include "tool/number_text.h"

namespace tool {

std::string VerifySummary::Verdict() const {
    if (Verified()) {
        return "Verified: everything in the sources is in the database.";
    }
    const std::uint64_t bad = differing + missing;
    if (bad == 0) {
        return fmt::format("NOT verified: {} found.", CountOf(differences, "difference"));
    }
    const std::uint64_t all = compared + missing;
    return fmt::format("NOT verified: {} of {} {}.", Grouped(bad), CountOf(all, "record"),
                       bad == 1 ? "differs" : "differ");
}

}  // namespace tool
