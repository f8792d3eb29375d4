#include "platform/foundation/obx_string.h"

#include <unicode/uchar.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>

#include "platform/foundation/cexception.h"
#include "platform/foundation/utf.h"
#include "platform/foundation/white_space.h"

namespace {

// Callers hand UTF-16 over as unsigned short, the string keeps char16_t. The two have the same size
// and representation but are different types, so the units are counted through a type that may
// alias and copied as bytes.
using AliasingUnit __attribute__((may_alias)) = unsigned short;

std::u16string CopyUnits(const unsigned short* text) {
    std::u16string copy;
    if (text != nullptr) {
        const AliasingUnit* end = text;
        while (*end != 0) {
            ++end;
        }
        copy.resize(static_cast<std::size_t>(end - text));
        std::memcpy(copy.data(), text, copy.size() * sizeof(char16_t));
    }
    return copy;
}

// The index of the first `unit` at or after `start`. Searches for the unit's low byte, which memchr
// does many times faster than a loop over units; the byte seldom occurs as a part of other units.
std::size_t FindUnit(std::u16string_view text, char16_t unit, std::size_t start) {
    constexpr std::size_t kLowByte = std::endian::native == std::endian::little ? 0 : 1;
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.data());
    const std::size_t size = text.size() * sizeof(char16_t);
    std::size_t at = start * sizeof(char16_t);
    while (at < size) {
        const void* found = std::memchr(bytes + at, unit & 0xFF, size - at);
        if (found == nullptr) {
            break;
        }
        at = static_cast<std::size_t>(static_cast<const unsigned char*>(found) - bytes);
        if (at % sizeof(char16_t) == kLowByte && text[at / sizeof(char16_t)] == unit) {
            return at / sizeof(char16_t);
        }
        ++at;
    }
    return std::u16string_view::npos;
}

int AsciiLower(char16_t unit) {
    return unit >= u'A' && unit <= u'Z' ? unit + 32 : unit;
}

int CompareFolded(std::u16string_view a, std::u16string_view b) {
    UErrorCode status = U_ZERO_ERROR;
    return u_strCaseCompare(a.data(), static_cast<std::int32_t>(a.size()), b.data(),
                            static_cast<std::int32_t>(b.size()), U_FOLD_CASE_DEFAULT, &status);
}

void AppendNumber(std::u16string& out, long long number) {
    char digits[std::numeric_limits<long long>::digits10 + 2];
    char* end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    out.append(std::begin(digits), end);
}

[[noreturn]] void ThrowFormatMismatch(std::u16string_view format, const char16_t* what) {
    throw new CException(Obx_String(u"The format \"") + Obx_String(format) + u"\" " + what);
}

}  // namespace

Obx_String::Obx_String(const char16_t* text) : m_text(ViewOf(text)) {}

Obx_String::Obx_String(const unsigned short* text) : m_text(CopyUnits(text)) {}

Obx_String Obx_String::FromUtf8(std::string_view text) {
    Obx_String result;
    if (Utf8ToUtf16(text, result.m_text)) {
        result.m_text = Utf8ToUtf16Lossy(text);
    }
    return result;
}

std::string Obx_String::ToUtf8() const {
    return Utf16ToUtf8Lossy(m_text);
}

const unsigned short* Obx_String::Units() const {
    return reinterpret_cast<const unsigned short*>(m_text.c_str());
}

Obx_String& Obx_String::operator+=(const Obx_String& text) {
    m_text += text.m_text;
    return *this;
}

Obx_String& Obx_String::operator+=(const char16_t* text) {
    m_text += ViewOf(text);
    return *this;
}

Obx_String& Obx_String::operator+=(char16_t unit) {
    m_text += unit;
    return *this;
}

Obx_String operator+(Obx_String left, const Obx_String& right) {
    left += right;
    return left;
}

Obx_String operator+(Obx_String left, const char16_t* right) {
    left += right;
    return left;
}

Obx_String operator+(const char16_t* left, const Obx_String& right) {
    Obx_String result(left);
    result += right;
    return result;
}

int Obx_String::CompareNoCase(std::u16string_view other) const {
    const std::u16string_view mine = m_text;
    const std::size_t common = std::min(mine.size(), other.size());
    for (std::size_t i = 0; i < common; ++i) {
        if (mine[i] >= 0x80 || other[i] >= 0x80) {
            return CompareFolded(mine, other);
        }
        const int difference = AsciiLower(mine[i]) - AsciiLower(other[i]);
        if (difference != 0) {
            return difference;
        }
    }
    return mine.size() == other.size() ? 0 : (mine.size() < other.size() ? -1 : 1);
}

void Obx_String::TrimLeft() {
    std::size_t first = 0;
    while (first < m_text.size() && IsWhiteSpace(m_text[first])) {
        ++first;
    }
    m_text.erase(0, first);
}

void Obx_String::TrimRight() {
    std::size_t size = m_text.size();
    while (size > 0 && IsWhiteSpace(m_text[size - 1])) {
        --size;
    }
    m_text.resize(size);
}

Obx_String Obx_String::Mid(int first) const {
    return Mid(first, GetLength());
}

Obx_String Obx_String::Mid(int first, int count) const {
    const auto begin = static_cast<std::size_t>(std::clamp(first, 0, GetLength()));
    return Obx_String(View().substr(begin, static_cast<std::size_t>(std::max(count, 0))));
}

int Obx_String::Find(std::u16string_view what, int start) const {
    const std::u16string_view text = m_text;
    std::size_t at = static_cast<std::size_t>(std::max(start, 0));
    if (what.empty()) {
        return at <= text.size() ? static_cast<int>(at) : -1;
    }
    while ((at = FindUnit(text, what.front(), at)) != std::u16string_view::npos) {
        if (text.substr(at, what.size()) == what) {
            return static_cast<int>(at);
        }
        ++at;
    }
    return -1;
}

void Obx_String::FormatList(std::u16string_view format,
                            std::initializer_list<FormatArgument> arguments) {
    std::u16string out;
    const auto* next = arguments.begin();
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != u'%') {
            out += format[i];
            continue;
        }
        const char16_t kind = ++i < format.size() ? format[i] : u'\0';
        if (kind == u'%') {
            out += u'%';
            continue;
        }
        if ((kind != u's' && kind != u'd') || next == arguments.end() ||
            next->IsText() != (kind == u's')) {
            ThrowFormatMismatch(format, u"does not fit its arguments");
        }
        if (kind == u's') {
            out += next->Text();
        } else {
            AppendNumber(out, next->Number());
        }
        ++next;
    }
    if (next != arguments.end()) {
        ThrowFormatMismatch(format, u"has more arguments than places");
    }
    m_text = std::move(out);
}
