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

// Most texts are ASCII: their leading run is copied eight characters at a time, the rest is ICU's.
std::size_t AsciiRun(std::string_view text) {
    std::size_t i = 0;
    for (; i + 8 <= text.size(); i += 8) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + i, sizeof word);
        if ((word & 0x8080808080808080U) != 0) {
            break;
        }
    }
    while (i < text.size() && static_cast<unsigned char>(text[i]) < 0x80) {
        ++i;
    }
    return i;
}

std::size_t AsciiRun(std::u16string_view text) {
    std::size_t i = 0;
    for (; i + 4 <= text.size(); i += 4) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data() + i, sizeof word);
        if ((word & 0xFF80FF80FF80FF80U) != 0) {
            break;
        }
    }
    while (i < text.size() && text[i] < 0x80) {
        ++i;
    }
    return i;
}

template <typename To, typename From>
void CopyAscii(From text, std::size_t count, To& out) {
    out.resize(count);
    // The plain pointers let the compiler see that the loop does not change what it reads through.
    auto* to = out.data();
    const auto* from = text.data();
    for (std::size_t i = 0; i < count; ++i) {
        to[i] = static_cast<typename To::value_type>(from[i]);
    }
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

}  // namespace

std::optional<std::size_t> Utf16ToUtf8(std::u16string_view text, std::string& out) {
    const std::size_t ascii = AsciiRun(text);
    CopyAscii(text, ascii, out);
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

std::optional<std::size_t> Utf8ToUtf16(std::string_view text, std::u16string& out) {
    const std::size_t ascii = AsciiRun(text);
    CopyAscii(text, ascii, out);
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
