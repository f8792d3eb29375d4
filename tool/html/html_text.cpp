#include "tool/html/html_text.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

#include "tool/text/visible_text.h"

namespace tool {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
// Below it, the only control characters are those that IsNoText knows.
constexpr UChar32 kFirstBidirectional = 0x600;

// Control characters but tab and line ends, and what Unicode calls no characters at all.
bool IsNoText(UChar32 character) {
    const bool control = character < 0x20 || (character >= 0x7F && character < 0xA0);
    const bool space = character == '\t' || character == '\n' || character == '\r';
    return character < 0 || (control && !space) || U_IS_UNICODE_NONCHAR(character);
}

std::string_view Escape(char c) {
    switch (c) {
        case '&':
            return "&amp;";
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '"':
            return "&quot;";
        case '\'':
            return "&#39;";
        default:
            return {};
    }
}

bool NeedsNoQuotes(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
           std::string_view("_-./:,+@%=").find(c) != std::string_view::npos;
}

}  // namespace

std::string HtmlText(std::string_view text) {
    std::string out;
    out.reserve(text.size() + text.size() / 8);
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size;) {
        const std::int64_t begin = at;
        UChar32 character = 0;
        U8_NEXT(bytes, at, size, character);
        const auto piece =
            text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
        if (IsNoText(character)) {
            out += kReplacement;
        } else if (character >= kFirstBidirectional) {
            out += VisibleText(piece);
        } else if (const auto escape = Escape(piece.front()); !escape.empty()) {
            out += escape;
        } else {
            out += piece;
        }
    }
    return out;
}

std::string Clipped(std::string_view text, std::size_t limit) {
    if (text.size() <= limit) {
        return std::string(text);
    }
    std::size_t end = limit;
    // A byte 10xxxxxx belongs to the character before it.
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) {
        --end;
    }
    return std::string(text.substr(0, end)) + std::string(kEllipsis);
}

std::string ShellWord(std::string_view word) {
    if (!word.empty() && std::all_of(word.begin(), word.end(), NeedsNoQuotes)) {
        return std::string(word);
    }
    std::string quoted = "'";
    for (const char c : word) {
        if (c == '\'') {
            quoted += "'\\''";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

}  // namespace tool
