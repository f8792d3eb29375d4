#include "tool/packet/importer_text.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

#include "platform/foundation/obx_string.h"
#include "platform/foundation/white_space.h"
#include "tool/packet/quiet_parser.h"

namespace tool {

namespace {

// The most bytes that a character takes in UTF-8.
constexpr std::size_t kLongest = U8_MAX_LENGTH;

bool IsAscii(char c) {
    return static_cast<unsigned char>(c) < 0x80U;
}

char AsciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool IsWhite(UChar32 character) {
    return character >= 0 && character <= 0xFFFF && IsWhiteSpace(static_cast<char16_t>(character));
}

}  // namespace

int CompareNoCase(std::string_view a, std::string_view b) {
    const std::size_t common = std::min(a.size(), b.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (!IsAscii(a[i]) || !IsAscii(b[i])) {
            return Obx_String::FromUtf8(a).CompareNoCase(Obx_String::FromUtf8(b));
        }
        if (const int difference = AsciiLower(a[i]) - AsciiLower(b[i]); difference != 0) {
            return difference;
        }
    }
    return a.size() == b.size() ? 0 : (a.size() < b.size() ? -1 : 1);
}

bool EqualNoCase(std::string_view a, std::string_view b) {
    return CompareNoCase(a, b) == 0;
}

std::string_view TrimmedLeft(std::string_view text) {
    while (!text.empty()) {
        std::size_t size = 0;
        UChar32 character = 0;
        U8_NEXT(reinterpret_cast<const std::uint8_t*>(text.data()), size, text.size(), character);
        if (!IsWhite(character)) {
            break;
        }
        text.remove_prefix(size);
    }
    return text;
}

std::string_view TrimmedRight(std::string_view text) {
    while (!text.empty()) {
        const std::string_view end = text.substr(text.size() - std::min(text.size(), kLongest));
        auto begin = static_cast<std::int32_t>(end.size());
        UChar32 character = 0;
        U8_PREV(reinterpret_cast<const std::uint8_t*>(end.data()), 0, begin, character);
        if (!IsWhite(character)) {
            break;
        }
        text.remove_suffix(end.size() - static_cast<std::size_t>(begin));
    }
    return text;
}

std::string_view Trimmed(std::string_view text) {
    return TrimmedRight(TrimmedLeft(text));
}

std::string DecodePacketEscapes(std::string_view text) {
    if (text.find('&') == std::string_view::npos) {
        return std::string(text);
    }
    return QuietParser()->UnEscape(Obx_String::FromUtf8(text)).ToUtf8();
}

}  // namespace tool
