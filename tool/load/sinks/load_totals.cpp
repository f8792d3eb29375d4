#include "tool/load/sinks/load_totals.h"

#include <algorithm>

namespace tool {

void Add(LoadTotals& totals, const LoadTotals& more) {
    totals.read += more.read;
    totals.created += more.created;
    totals.updated += more.updated;
    totals.rejected += more.rejected;
    totals.skipped += more.skipped;
    totals.history += more.history;
    totals.attachments += more.attachments;
    totals.duplicates += more.duplicates;
    totals.waited += more.waited;
    totals.retried += more.retried;
    totals.workers = std::max(totals.workers, more.workers);
    totals.ahead += more.ahead;
    totals.inTurn += more.inTurn;
}

}  // namespace tool
