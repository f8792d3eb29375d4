#ifndef TOOL_HTML_EXAMPLE_GROUPS_H
#define TOOL_HTML_EXAMPLE_GROUPS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tool/html/reason_pattern.h"

namespace tool {

// A record, or a place in a source, that shows what a group is about.
struct Example {
    std::string source;
    std::uint64_t record = 0;  // from 1; 0: no record's
    std::uint64_t line = 0;    // from 1; 0: the source as a whole
    std::string sourceId;      // empty when there is none
    std::string text;
};

// Things of one kind: how many there are, and the first few of them.
struct ExampleGroup {
    static constexpr std::size_t examplesKept = 5;

    std::string title;
    std::uint64_t count = 0;
    std::vector<Example> examples;

    // Counts EXAMPLE, and keeps it when it is one of the first. Long texts are cut.
    void Add(const Example& example);
};

// Rejected records by cause, in memory that does not grow with their number: up to causesKept
// causes, and one more for all the others.
class RejectCauses {
  public:
    static constexpr std::size_t causesKept = 200;

    // Adds a rejected record, of which EXAMPLE.text is the reason.
    void Add(const Example& example);

    // The causes by falling count, those of one count in the order of their first records; the
    // group of other causes, if there is one, stands last. A title has the values that all reasons
    // of its cause share, and an ellipsis for each other value.
    std::vector<ExampleGroup> Groups() const;

  private:
    struct Cause {
        ReasonPattern pattern;
        ExampleGroup group;
    };

    std::vector<Cause> m_causes;
    std::unordered_map<std::string, std::size_t> m_indices;  // by wording
    ExampleGroup m_others;
};

}  // namespace tool

#endif
