#ifndef TOOL_VERIFY_COMPARISON_VALUE_COMPARISON_H
#define TOOL_VERIFY_COMPARISON_VALUE_COMPARISON_H

#include "recorddb/record.h"
#include "tool/verify/comparison/difference_reporter.h"
#include "tool/verify/comparison/expected_record.h"
#include "tool/verify/sinks/verify_summary.h"

namespace tool {

// Compare what stands in a record's own fields: values and states, references and reference lists.
// What was compared is counted in `tally`.
void CompareValues(const ExpectedRecord& expected, const recorddb::RecordView& record,
                   DifferenceReporter& reporter, VerifiedType& tally);

}  // namespace tool

#endif
