#include "platform/core/adtext.h"

#include <unicode/uchar.h>

#include <limits>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kNone = std::u16string_view::npos;

bool IsDigit(char16_t unit) {
    return unit >= u'0' && unit <= u'9';
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
    const std::u16string_view old = text.View();
    std::size_t found = from.IsEmpty() ? kNone : old.find(from.View());
    if (found == kNone) {
        return;
    }
    std::u16string out;
    out.reserve(old.size());
    std::size_t begin = 0;
    for (; found != kNone; found = old.find(from.View(), begin)) {
        out.append(old, begin, found - begin).append(to.View());
        begin = found + from.View().size();
    }
    out.append(old, begin);
    text = Obx_String(std::move(out));
}

void AdSplitString(const Obx_String& text, const Obx_String& separator, CStringArray& parts) {
    parts.RemoveAll();
    const std::u16string_view rest = text.View();
    if (rest.empty()) {
        return;
    }
    std::size_t begin = 0;
    std::size_t found = separator.IsEmpty() ? kNone : rest.find(separator.View());
    for (; found != kNone; found = rest.find(separator.View(), begin)) {
        parts.Add(Obx_String(rest.substr(begin, found - begin)));
        begin = found + separator.View().size();
    }
    parts.Add(Obx_String(rest.substr(begin)));
}

void AdSplitTextIntoLines(const Obx_String& text, CStringArray& lines) {
    lines.RemoveAll();
    std::u16string_view rest = text.View();
    while (!rest.empty()) {
        const std::size_t end = rest.find_first_of(u"\r\n");
        lines.Add(Obx_String(rest.substr(0, end)));
        if (end == kNone) {
            return;
        }
        rest.remove_prefix(end + (rest.substr(end, 2) == u"\r\n" ? 2 : 1));
    }
}

Obx_String AdBasename(const Obx_String& path) {
    const std::size_t slash = path.View().find_last_of(u"/\\");
    return slash == kNone ? path : Obx_String(path.View().substr(slash + 1));
}

long AdStrToLong(const Obx_String& text) {
    std::u16string_view rest = text.View();
    while (!rest.empty() && u_isUWhiteSpace(rest.front()) != 0) {
        rest.remove_prefix(1);
    }
    const bool negative = !rest.empty() && rest.front() == u'-';
    if (negative || (!rest.empty() && rest.front() == u'+')) {
        rest.remove_prefix(1);
    }
    // The number is built below zero, where long reaches one further than above it.
    constexpr long kLowest = std::numeric_limits<long>::min();
    constexpr long kHighest = std::numeric_limits<long>::max();
    long number = 0;
    for (; !rest.empty() && IsDigit(rest.front()); rest.remove_prefix(1)) {
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
