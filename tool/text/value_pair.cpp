#include "tool/text/value_pair.h"

#include <algorithm>
#include <cstddef>

#include "tool/text/visible_text.h"

namespace tool {

namespace {

// In bytes, before what is written otherwise.
constexpr std::size_t kBefore = 30;
constexpr std::size_t kLongest = 100;

bool IsInsideCharacter(std::string_view text, std::size_t position) {
    return position < text.size() && (static_cast<unsigned char>(text[position]) & 0xC0U) == 0x80U;
}

std::size_t FirstDifference(std::string_view a, std::string_view b) {
    const auto [end, other] = std::mismatch(a.begin(), a.end(), b.begin(), b.end());
    return static_cast<std::size_t>(end - a.begin());
}

std::string Show(std::string_view text, std::size_t begin) {
    begin = std::min(begin, text.size());
    std::size_t end = std::min(text.size(), begin + kLongest);
    while (begin > 0 && IsInsideCharacter(text, begin)) {
        --begin;
    }
    while (end > begin && IsInsideCharacter(text, end)) {
        --end;
    }
    return (begin > 0 ? "..." : "") + VisibleText(text.substr(begin, end - begin)) +
           (end < text.size() ? "..." : "");
}

}  // namespace

ShownPair ShowPair(std::string_view source, std::string_view database) {
    std::size_t begin = 0;
    if (std::max(source.size(), database.size()) > kLongest) {
        const std::size_t different = FirstDifference(source, database);
        begin = different > kBefore ? different - kBefore : 0;
    }
    return {.source = Show(source, begin), .database = Show(database, begin)};
}

}  // namespace tool
