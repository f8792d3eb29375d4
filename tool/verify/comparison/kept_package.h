#ifndef TOOL_VERIFY_COMPARISON_KEPT_PACKAGE_H
#define TOOL_VERIFY_COMPARISON_KEPT_PACKAGE_H

#include <cstddef>
#include <functional>
#include <optional>
#include <vector>

#include "tool/process/work_queue.h"
#include "tool/verify/comparison/record_comparer.h"
#include "tool/verify/records/kept_record.h"
#include "tool/verify/sinks/difference.h"
#include "tool/verify/sinks/verify_tally.h"

namespace tool {

// What the sources say about some records of the database, and how the comparison came out.
struct KeptPackage {
    std::vector<KeptRecord> records;  // those of one record of the database side by side
    // There is more to come of the last record of the database than is kept in memory.
    bool isOpen = false;

    // By record of the database, of those that have been compared.
    std::vector<std::vector<Difference>> differences;
    std::optional<VerifyTally> tally;  // once all of them have been

    WorkState state = WorkState::New;
};

// Returns the configuration for a KeptRecord::configuration.
using ConfigurationOf = std::function<const ImportConfiguration&(std::size_t)>;

// The end of the records, from `begin` on, that speak of one record of the database.
std::size_t EndOfSubject(const KeptPackage& package, std::size_t begin);

// Compares what has not been compared of a package, unless a signal ends that. `more`, for an open
// package, adds the rest of its last record. Throws sql::Error, and what `more` throws.
void Compare(KeptPackage& package, RecordComparer& comparer, const ConfigurationOf& configuration,
             const std::function<void(RecordComparer&)>& more);

}  // namespace tool

#endif
