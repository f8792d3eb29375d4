#include "tool/html/example_groups.h"

#include <algorithm>

#include "tool/html/html_text.h"

namespace tool {

namespace {

constexpr std::size_t kTextLimit = 4000;
constexpr std::size_t kExampleNameLimit = 1000;

// Empties the values that differ, which Readable then shows as an ellipsis.
void KeepCommonValues(ReasonPattern& pattern, const ReasonPattern& other) {
    for (std::size_t i = 0; i < pattern.values.size(); ++i) {
        if (i >= other.values.size() || pattern.values[i] != other.values[i]) {
            pattern.values[i].clear();
        }
    }
}

}  // namespace

void ExampleGroup::Add(const Example& example) {
    ++count;
    if (examples.size() == kExamplesKept) {
        return;
    }
    examples.push_back({Clipped(example.source, kExampleNameLimit), example.record, example.line,
                        Clipped(example.sourceId, kExampleNameLimit), example.details,
                        example.unit});
    for (ExampleDetail& detail : examples.back().details) {
        detail.text = Clipped(detail.text, kTextLimit);
    }
}

void PatternGroups::Add(std::string_view text, const Example& example) {
    ReasonPattern pattern = PatternOf(text);
    const auto known = m_indices.find(pattern.wording);
    if (known != m_indices.end()) {
        Entry& entry = m_entries[known->second];
        KeepCommonValues(entry.pattern, pattern);
        entry.group.Add(example);
    } else if (m_entries.size() < kGroupsKept) {
        m_indices.emplace(pattern.wording, m_entries.size());
        m_entries.push_back({std::move(pattern), {}});
        m_entries.back().group.Add(example);
    } else {
        m_others.Add(example);
    }
}

std::vector<ExampleGroup> PatternGroups::Groups() const {
    std::vector<ExampleGroup> groups;
    for (const Entry& entry : m_entries) {
        groups.push_back(entry.group);
        groups.back().title = Readable(entry.pattern);
    }
    std::stable_sort(
        groups.begin(), groups.end(),
        [](const ExampleGroup& a, const ExampleGroup& b) { return a.count > b.count; });
    if (m_others.count > 0) {
        groups.push_back(m_others);
    }
    return groups;
}

}  // namespace tool
