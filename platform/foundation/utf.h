#ifndef PLATFORM_FOUNDATION_UTF_H
#define PLATFORM_FOUNDATION_UTF_H

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

// Conversion between UTF-8 and UTF-16. The strict forms report where a text is not valid instead of
// changing it; the lossy forms put U+FFFD in place of each invalid part and are meant for texts
// that only people read (traces, messages).

// Replaces `out` by the UTF-8 form of `text`. Returns nothing on success, else the index of the
// first unit that belongs to no character (an unpaired surrogate); `out` is then unspecified.
std::optional<std::size_t> Utf16ToUtf8(std::u16string_view text, std::string& out);

// The same for a zero-terminated text, which may have been made from either type of units. A null
// pointer counts as the empty text.
std::optional<std::size_t> Utf16ToUtf8(const unsigned short* text, std::string& out);

// Replaces `out` by the UTF-16 form of `text`. Returns nothing on success, else the index of the
// first byte that belongs to no character; `out` is then unspecified.
std::optional<std::size_t> Utf8ToUtf16(std::string_view text, std::u16string& out);

std::string Utf16ToUtf8Lossy(std::u16string_view text);
std::u16string Utf8ToUtf16Lossy(std::string_view text);

#endif
