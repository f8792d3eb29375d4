#include "tool/html/example_groups.h"

#include <algorithm>
#include <utility>

#include "tool/html/html_text.h"

namespace tool {

namespace {

constexpr std::size_t kTextLimit = 4000;
constexpr std::size_t kNameLimit = 1000;

// An empty value is shown as one that differs.
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
    if (examples.size() < examplesKept) {
        examples.push_back({Clipped(example.source, kNameLimit), example.record, example.line,
                            Clipped(example.sourceId, kNameLimit),
                            Clipped(example.text, kTextLimit)});
    }
}

void RejectCauses::Add(const Example& example) {
    ReasonPattern pattern = PatternOf(example.text);
    const auto known = m_indices.find(pattern.wording);
    if (known != m_indices.end()) {
        Cause& cause = m_causes[known->second];
        KeepCommonValues(cause.pattern, pattern);
        cause.group.Add(example);
    } else if (m_causes.size() < causesKept) {
        m_indices.emplace(pattern.wording, m_causes.size());
        m_causes.push_back({std::move(pattern), {}});
        m_causes.back().group.Add(example);
    } else {
        m_others.Add(example);
    }
}

std::vector<ExampleGroup> RejectCauses::Groups() const {
    std::vector<ExampleGroup> groups;
    for (const Cause& cause : m_causes) {
        groups.push_back(cause.group);
        groups.back().title = Readable(cause.pattern);
    }
    std::stable_sort(
        groups.begin(), groups.end(),
        [](const ExampleGroup& a, const ExampleGroup& b) { return a.count > b.count; });
    if (m_others.count > 0) {
        groups.push_back(m_others);
        groups.back().title = "other causes";
    }
    return groups;
}

}  // namespace tool
