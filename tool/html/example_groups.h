#ifndef TOOL_HTML_EXAMPLE_GROUPS_H
#define TOOL_HTML_EXAMPLE_GROUPS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tool/html/reason_pattern.h"

namespace tool {

// A text that an example shows, after a label that may be empty.
struct ExampleDetail {
    std::string label;
    std::string text;
};

// A record, or a place in a source, that shows what a group is about.
struct Example {
    std::string source;
    std::uint64_t record = 0;  // from 1; 0: no record's
    std::uint64_t line = 0;    // from 1; 0: the source as a whole
    std::string sourceId;      // empty when there is none
    std::vector<ExampleDetail> details;
    std::string unit = "record";  // what `record` counts: a "row", say
};

// Things of one kind: how many there are, and the first few of them.
struct ExampleGroup {
    static constexpr std::size_t kExamplesKept = 5;

    std::string title;
    std::uint64_t count = 0;
    std::vector<Example> examples;

    // Counts `example`, and keeps it when it is one of the first. Long texts are cut.
    void Add(const Example& example);
};

// Things by the patterns of what is said of them, in memory that does not grow with their number:
// up to kGroupsKept groups, and one more for all the others.
class PatternGroups {
  public:
    static constexpr std::size_t kGroupsKept = 200;

    // `others` is the title of the group of all that the limit leaves no group for.
    explicit PatternGroups(std::string others) { m_others.title = std::move(others); }

    // Adds `example`, of which `text` is said, to the group of the texts with the same wording.
    void Add(std::string_view text, const Example& example);

    // The groups by falling count, those of one count in the order of their first examples; the
    // group of the others, if there is one, stands last. A title has the values that all texts of
    // its group share, and an ellipsis for each other value.
    std::vector<ExampleGroup> Groups() const;

  private:
    struct Entry {
        ReasonPattern pattern;
        ExampleGroup group;
    };

    std::vector<Entry> m_entries;
    std::unordered_map<std::string, std::size_t> m_indices;  // by wording
    ExampleGroup m_others;
};

}  // namespace tool

#endif
