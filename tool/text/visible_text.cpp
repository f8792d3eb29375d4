#include "tool/text/visible_text.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cstddef>

namespace tool {

namespace {

constexpr std::string_view kIndent = "    ";

// True for most bytes of any text.
bool IsPlain(std::uint8_t byte) {
    return byte >= 0x20 && byte < 0x7F;
}

bool IsBidirectionalControl(UChar32 character) {
    return u_hasBinaryProperty(character, UCHAR_BIDI_CONTROL) != 0;
}

bool IsHarmless(UChar32 character) {
    constexpr UChar32 lineSeparator = 0x2028;
    constexpr UChar32 paragraphSeparator = 0x2029;
    constexpr UChar32 firstBeyondLatin = 0x0600;
    if (character < firstBeyondLatin) {
        return character >= 0x20 && (character < 0x7F || character >= 0xA0);
    }
    return character != lineSeparator && character != paragraphSeparator &&
           !U_IS_UNICODE_NONCHAR(character) && !IsBidirectionalControl(character);
}

// The escape of the character, as in C.
std::string VisibleEscapeOf(UChar32 character, std::string_view bytes) {
    constexpr UChar32 firstC1 = 0x80;
    constexpr UChar32 lastOfPlane = 0xFFFF;
    const auto code = static_cast<std::uint32_t>(character);
    if (character == '\n') {
        return "\\n";
    }
    if (character == '\t') {
        return "\\t";
    }
    if (character == '\r') {
        return "\\r";
    }
    if (character >= firstC1) {
        return character <= lastOfPlane ? fmt::format("\\u{:04x}", code)
                                        : fmt::format("\\U{:08x}", code);
    }
    std::string escape;
    for (const char byte : bytes) {
        escape += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
    return escape;
}

}  // namespace

std::string Escaped(std::string_view text,
                    std::string (*escape)(std::int32_t character, std::string_view bytes)) {
    std::string out;
    out.reserve(text.size());
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size;) {
        const auto* const plain = std::find_if_not(bytes + at, bytes + size, IsPlain);
        out.append(text.data() + at, static_cast<std::size_t>(plain - (bytes + at)));
        at = plain - bytes;
        if (at == size) {
            break;
        }
        const std::int64_t begin = at;
        UChar32 character = 0;
        U8_NEXT(bytes, at, size, character);
        const auto piece =
            text.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(at - begin));
        if (character >= 0 && IsHarmless(character)) {
            out += piece;
        } else {
            out += escape(character, piece);
        }
    }
    return out;
}

std::string VisibleText(std::string_view text) {
    return Escaped(text, VisibleEscapeOf);
}

std::string VisibleLines(std::string_view text) {
    std::string out;
    for (std::size_t end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        out += VisibleText(text.substr(0, end));
        out += '\n';
        out += kIndent;
        text.remove_prefix(end + 1);
    }
    return out + VisibleText(text);
}

}  // namespace tool
