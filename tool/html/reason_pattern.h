#ifndef TOOL_HTML_REASON_PATTERN_H
#define TOOL_HTML_REASON_PATTERN_H

#include <string>
#include <string_view>
#include <vector>

namespace tool {

// A reason for which a record was rejected, taken apart: what it says, and of which values. Two
// records were rejected for one cause when the wording of their reasons is the same.
//
// Values are what stands in double quotes and whole numbers. Names of fields and record types,
// which the messages announce by these words, belong to the wording: where to mend depends on them.
struct ReasonPattern {
    std::string wording;              // with kValueMark in the place of each value
    std::vector<std::string> values;  // quotes not included; long ones are cut

    static constexpr char kValueMark = '\x01';
};

// Memory does not depend on the length of `reason`.
ReasonPattern PatternOf(std::string_view reason);

// The pattern as people read it: the values in their places, an ellipsis for those that are empty.
std::string Readable(const ReasonPattern& pattern);

}  // namespace tool

#endif
