#include "tool/verify/value_pair.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

#include "platform/foundation/utf.h"

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

std::string Visible(std::string_view text) {
    std::string visible;
    // Anything that is not UTF-8 becomes U+FFFD on the way.
    for (const char unit : Utf16ToUtf8Lossy(Utf8ToUtf16Lossy(text))) {
        const auto code = static_cast<unsigned char>(unit);
        if (unit == '\n') {
            visible += "\\n";
        } else if (unit == '\t') {
            visible += "\\t";
        } else if (unit == '\r') {
            visible += "\\r";
        } else if (code < 0x20U || code == 0x7FU) {
            visible += fmt::format("\\x{:02x}", code);
        } else {
            visible += unit;
        }
    }
    return visible;
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
    return (begin > 0 ? "..." : "") + Visible(text.substr(begin, end - begin)) +
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
