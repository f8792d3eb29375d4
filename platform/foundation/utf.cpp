#include "platform/foundation/utf.h"

#include <unicode/ustring.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <stdexcept>

namespace {

// ICU counts in int32_t; a longer text could not be addressed.
std::int32_t IcuLength(std::size_t length) {
    if (length > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max() / 3)) {
        throw std::length_error("a text of more than 700 million units cannot be converted");
    }
    return static_cast<std::int32_t>(length);
}

// Callers hand UTF-16 over as unsigned short or as char16_t, so it is read through a type that may
// alias both.
using AliasingUnit __attribute__((may_alias)) = unsigned short;

// True when none of the units in so many bytes has one of these bits.
template <std::size_t bytes>
bool HasNone(const void* text, std::uint64_t bits) {
    std::uint64_t seen = 0;
    for (std::size_t at = 0; at < bytes; at += sizeof seen) {
        std::uint64_t word = 0;
        std::memcpy(&word, static_cast<const char*>(text) + at, sizeof word);
        seen |= word;
    }
    return (seen & bits) == 0;
}

// Most texts are ASCII. The length of the leading run of it.
std::size_t AsciiRun(const char* text, std::size_t size) {
    constexpr std::size_t block = 16;
    std::size_t i = 0;
    while (i + block <= size && HasNone<block>(text + i, 0x8080808080808080U)) {
        i += block;
    }
    while (i < size && static_cast<unsigned char>(text[i]) < 0x80) {
        ++i;
    }
    return i;
}

std::size_t AsciiRun(const AliasingUnit* text, std::size_t size) {
    constexpr std::size_t block = 8;
    std::size_t i = 0;
    while (i + block <= size && HasNone<2 * block>(text + i, 0xFF80FF80FF80FF80U)) {
        i += block;
    }
    while (i < size && text[i] < 0x80) {
        ++i;
    }
    return i;
}

// The loops that copy ASCII know that they do not change what they read, so that the compiler makes
// vector operations of them.
void Copy(const char* __restrict from, std::size_t count, char16_t* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<unsigned char>(from[i]);
    }
}

void Copy(const AliasingUnit* __restrict from, std::size_t count, char* __restrict to) {
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<char>(from[i]);
    }
}

// Replaces `out` by the leading run of ASCII, the rest is ICU's. Returns its length.
template <typename Text, typename Units>
std::size_t TakeAscii(const Units* text, std::size_t size, Text& out) {
    const std::size_t count = AsciiRun(text, size);
    out.resize_and_overwrite(count, [=](typename Text::value_type* to, std::size_t) {
        Copy(text, count, to);
        return count;
    });
    return count;
}

std::size_t FirstInvalidUnit(std::u16string_view text) {
    const std::int32_t length = IcuLength(text.size());
    for (std::int32_t i = 0; i < length;) {
        const std::int32_t start = i;
        UChar32 character = 0;
        U16_NEXT(text.data(), i, length, character);
        if (U_IS_SURROGATE(character)) {
            return static_cast<std::size_t>(start);
        }
    }
    return text.size();
}

// ICU's macro narrows an int, which cannot be changed here.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"

std::size_t FirstInvalidByte(std::string_view text) {
    const std::int32_t length = IcuLength(text.size());
    for (std::int32_t i = 0; i < length;) {
        const std::int32_t start = i;
        UChar32 character = 0;
        U8_NEXT(text.data(), i, length, character);
        if (character < 0) {
            return static_cast<std::size_t>(start);
        }
    }
    return text.size();
}

#pragma GCC diagnostic pop

// The length of a zero-terminated text; a null pointer counts as an empty one. Four units a step:
// whole packets are gone through.
std::size_t LengthOf(const AliasingUnit* text) {
    if (text == nullptr) {
        return 0;
    }
    for (std::size_t length = 0;; length += 4) {
        if (text[length] == 0) {
            return length;
        }
        if (text[length + 1] == 0) {
            return length + 1;
        }
        if (text[length + 2] == 0) {
            return length + 2;
        }
        if (text[length + 3] == 0) {
            return length + 3;
        }
    }
}

// Adds what comes after the run of ASCII that `out` holds.
std::optional<std::size_t> AddBeyondAscii(std::u16string_view text, std::string& out) {
    const std::size_t ascii = out.size();
    if (ascii == text.size()) {
        return std::nullopt;
    }
    const std::u16string_view rest = text.substr(ascii);
    const std::int32_t length = IcuLength(rest.size());
    out.resize(ascii + rest.size() * 3);
    std::int32_t written = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8(out.data() + ascii, length * 3, &written, rest.data(), length, &status);
    if (U_FAILURE(status) != 0) {
        return ascii + FirstInvalidUnit(rest);
    }
    out.resize(ascii + static_cast<std::size_t>(written));
    return std::nullopt;
}

}  // namespace

std::optional<std::size_t> Utf16ToUtf8(std::u16string_view text, std::string& out) {
    TakeAscii(reinterpret_cast<const AliasingUnit*>(text.data()), text.size(), out);
    return AddBeyondAscii(text, out);
}

std::optional<std::size_t> Utf16ToUtf8(const unsigned short* text, std::string& out) {
    const std::size_t size = LengthOf(text);
    if (TakeAscii(static_cast<const AliasingUnit*>(text), size, out) == size) {
        return std::nullopt;
    }
    std::u16string units(size, u'\0');
    std::memcpy(units.data(), text, size * sizeof(char16_t));
    return AddBeyondAscii(units, out);
}

std::optional<std::size_t> Utf8ToUtf16(std::string_view text, std::u16string& out) {
    const std::size_t ascii = TakeAscii(text.data(), text.size(), out);
    if (ascii == text.size()) {
        return std::nullopt;
    }
    const std::string_view rest = text.substr(ascii);
    const std::int32_t length = IcuLength(rest.size());
    out.resize(ascii + rest.size());
    std::int32_t written = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8(out.data() + ascii, length, &written, rest.data(), length, &status);
    if (U_FAILURE(status) != 0) {
        return ascii + FirstInvalidByte(rest);
    }
    out.resize(ascii + static_cast<std::size_t>(written));
    return std::nullopt;
}

std::string Utf16ToUtf8Lossy(std::u16string_view text) {
    std::string out;
    if (!Utf16ToUtf8(text, out)) {
        return out;
    }
    const std::int32_t length = IcuLength(text.size());
    out.resize(text.size() * 3);
    std::int32_t written = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strToUTF8WithSub(out.data(), length * 3, &written, text.data(), length, 0xFFFD, nullptr,
                       &status);
    out.resize(static_cast<std::size_t>(written));
    return out;
}

std::u16string Utf8ToUtf16Lossy(std::string_view text) {
    std::u16string out;
    if (!Utf8ToUtf16(text, out)) {
        return out;
    }
    const std::int32_t length = IcuLength(text.size());
    out.resize(text.size());
    std::int32_t written = 0;
    UErrorCode status = U_ZERO_ERROR;
    u_strFromUTF8WithSub(out.data(), length, &written, text.data(), length, 0xFFFD, nullptr,
                         &status);
    out.resize(static_cast<std::size_t>(written));
    return out;
}
