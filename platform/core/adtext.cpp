#include "platform/core/adtext.h"

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "platform/foundation/decimal_digit.h"
#include "platform/foundation/white_space.h"

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;
constexpr int kNotFound = -1;

// The units from index `begin` up to, but without, index `end`.
std::u16string_view Part(const Obx_String& text, int begin, int end) {
    return text.View().substr(static_cast<std::size_t>(begin),
                              static_cast<std::size_t>(end - begin));
}

// Up to the first line feed or carriage return; kNone when there is none. The library's
// find_first_of takes five times as long.
std::size_t LineLength(std::u16string_view text) {
    const auto* const end = std::find_if(
        text.begin(), text.end(), [](char16_t unit) { return unit == u'\n' || unit == u'\r'; });
    return end == text.end() ? kNone : static_cast<std::size_t>(end - text.begin());
}

}  // namespace

int AdIsEmpty(const Obx_String& text) {
    return text.IsEmpty() ? 1 : 0;
}

int AdIsEqual(const Obx_String& a, const Obx_String& b) {
    return a == b ? 1 : 0;
}

int AdIsUnequal(const Obx_String& a, const Obx_String& b) {
    return a == b ? 0 : 1;
}

int AdIsEqualNoCase(const Obx_String& a, const Obx_String& b) {
    return a.CompareNoCase(b) == 0 ? 1 : 0;
}

void AdReplaceString(Obx_String& text, const Obx_String& from, const Obx_String& to) {
    int found = from.IsEmpty() ? kNotFound : text.Find(from.View());
    if (found == kNotFound) {
        return;
    }
    std::u16string out;
    int begin = 0;
    for (; found != kNotFound; found = text.Find(from.View(), begin)) {
        out.append(Part(text, begin, found)).append(to.View());
        begin = found + from.GetLength();
    }
    out.append(Part(text, begin, text.GetLength()));
    text = Obx_String(std::move(out));
}

void AdSplitString(const Obx_String& text, const Obx_String& separator, CStringArray& parts) {
    parts.RemoveAll();
    if (text.IsEmpty()) {
        return;
    }
    int begin = 0;
    int found = separator.IsEmpty() ? kNotFound : text.Find(separator.View());
    for (; found != kNotFound; found = text.Find(separator.View(), begin)) {
        parts.Add(Obx_String(Part(text, begin, found)));
        begin = found + separator.GetLength();
    }
    parts.Add(Obx_String(Part(text, begin, text.GetLength())));
}

void AdSplitTextIntoLines(const Obx_String& text, CStringArray& lines) {
    lines.RemoveAll();
    std::u16string_view rest = text.View();
    while (!rest.empty()) {
        lines.Add(Obx_String(AdTakeLine(rest)));
    }
}

std::u16string_view AdTakeLine(std::u16string_view& text) {
    const std::size_t end = LineLength(text);
    const std::u16string_view line = text.substr(0, end);
    if (end == kNone) {
        text = {};
    } else {
        text.remove_prefix(end + (text.substr(end, 2) == u"\r\n" ? 2 : 1));
    }
    return line;
}

Obx_String AdBasename(const Obx_String& path) {
    const std::size_t slash = path.View().find_last_of(u"/\\");
    return slash == kNone ? path : Obx_String(path.View().substr(slash + 1));
}

long AdStrToLong(const Obx_String& text) {
    std::u16string_view rest = text.View();
    while (!rest.empty() && IsWhiteSpace(rest.front())) {
        rest.remove_prefix(1);
    }
    const bool negative = !rest.empty() && rest.front() == u'-';
    if (negative || (!rest.empty() && rest.front() == u'+')) {
        rest.remove_prefix(1);
    }
    // The number is built as a negative one, because the range of long is larger by one below zero.
    constexpr long kLowest = std::numeric_limits<long>::min();
    constexpr long kHighest = std::numeric_limits<long>::max();
    long number = 0;
    for (; !rest.empty() && IsDecimalDigit(rest.front()); rest.remove_prefix(1)) {
        const long digit = rest.front() - u'0';
        if (number < (kLowest + digit) / 10) {
            return negative ? kLowest : kHighest;
        }
        number = number * 10 - digit;
    }
    if (negative) {
        return number;
    }
    return number == kLowest ? kHighest : -number;
}
