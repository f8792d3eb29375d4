#include "tool/survey/value_counts.h"

#include <algorithm>
#include <functional>
#include <tuple>

namespace tool {

std::string_view Beginning(std::string_view text, std::size_t size) {
    size = std::min(text.size(), size);
    while (size < text.size() && size > 0 &&
           (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return text.substr(0, size);
}

ValueHash HashOf(std::string_view value) {
    return std::hash<std::string_view>()(value);
}

bool ValueCounts::Add(std::string_view value, ValueHash hash) {
    if (const auto found = m_entries.find(hash); found != m_entries.end()) {
        ++found->second.count;
        return true;
    }
    if (m_entries.size() == kLimit) {
        m_hasMore = true;
        return false;
    }
    const std::string_view text = Beginning(value, kTextSize);
    m_entries.emplace(hash, Entry{std::string(text), 1, text.size() == value.size()});
    return false;
}

std::vector<ValueCounts::Entry> ValueCounts::Frequent(std::size_t most) const {
    std::vector<Entry> entries;
    entries.reserve(m_entries.size());
    for (const auto& [hash, entry] : m_entries) {
        entries.push_back(entry);
    }
    std::sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        return std::tie(b.count, a.text) < std::tie(a.count, b.text);
    });
    entries.resize(std::min(entries.size(), most));
    return entries;
}

}  // namespace tool
