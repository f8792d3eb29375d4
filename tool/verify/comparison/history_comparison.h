#ifndef TOOL_VERIFY_COMPARISON_HISTORY_COMPARISON_H
#define TOOL_VERIFY_COMPARISON_HISTORY_COMPARISON_H

#include <vector>

#include "recorddb/record.h"
#include "tool/verify/comparison/difference_reporter.h"
#include "tool/verify/comparison/expected_record.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// Compares a record's history with `stored`, the database's, by time and, at one time, in the order
// of arrival. Entries that differ in one column are reported as such, others as missing from the
// database or unknown to the sources; an unknown one is no difference where the sources do not
// create the record.
void CompareHistory(const ExpectedRecord& expected,
                    const std::vector<recorddb::HistoryEntry>& stored, DifferenceReporter& reporter,
                    VerifiedType& tally);

}  // namespace tool

#endif
