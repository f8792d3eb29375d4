#ifndef TOOL_SURVEY_VALUE_COUNTS_H
#define TOOL_SURVEY_VALUE_COUNTS_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tool {

// The hash by which values are told apart.
using ValueHash = std::uint64_t;
ValueHash HashOf(std::string_view value);

// As much of the beginning of `text` as fits into `size` bytes, without half a character at its
// end.
std::string_view Beginning(std::string_view text, std::size_t size);

// The distinct values among any number of them, and how often each came. Only so many are told
// apart, so that memory does not grow with the data.
class ValueCounts {
  public:
    static constexpr std::size_t kLimit = 500;
    static constexpr std::size_t kTextSize = 80;  // of what is kept of a value, in bytes

    struct Entry {
        std::string text;  // its beginning, characters left whole
        std::uint64_t count = 0;
        bool isWhole = true;
    };

    // Returns whether the value had been counted before; past the limit, whether it is one of those
    // that are told apart.
    bool Add(std::string_view value, ValueHash hash);

    // How many different values came: exactly, unless there were more than the limit.
    std::size_t Distinct() const { return m_entries.size(); }
    bool HasMore() const { return m_hasMore; }

    // The most frequent values, `most` at the most; those that came as often as each other in the
    // order of their texts.
    std::vector<Entry> Frequent(std::size_t most) const;

    const std::unordered_map<ValueHash, Entry>& Entries() const { return m_entries; }

  private:
    std::unordered_map<ValueHash, Entry> m_entries;
    bool m_hasMore = false;
};

}  // namespace tool

#endif
