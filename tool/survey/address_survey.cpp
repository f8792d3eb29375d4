#include "tool/survey/address_survey.h"

#include <unicode/utf8.h>

#include <algorithm>

namespace tool {

namespace {

// The longest text that may be a key, in bytes.
constexpr std::size_t kLongestKey = 500;
// An address may be that of a key as long as at most one value in kAllowedRepeats has come before:
// where values are nearly all different, it is worth telling how many are not. Among fewer than
// kEnoughValues that says nothing yet.
constexpr std::uint64_t kEnoughValues = 40;
constexpr std::uint64_t kAllowedRepeats = 20;
// Larger ones may not fit into a field of whole numbers.
constexpr std::size_t kIntegerDigits = 18;

bool IsInteger(std::string_view text) {
    if (text.starts_with('-')) {
        text.remove_prefix(1);
        if (text == "0") {
            return false;
        }
    }
    return !text.empty() && text.size() <= kIntegerDigits && (text[0] != '0' || text.size() == 1) &&
           std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// What there is to know of the characters of a text.
struct TextTraits {
    std::size_t length = 0;
    bool severalLines = false;
    bool carriageReturn = false;
    bool forbidden = false;
};

TextTraits TraitsOf(std::string_view text) {
    constexpr UChar32 firstNoncharacter = 0xFFFE;
    constexpr UChar32 lastNoncharacter = 0xFFFF;
    TextTraits traits;
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto size = static_cast<std::int64_t>(text.size());
    for (std::int64_t at = 0; at < size; ++traits.length) {
        UChar32 character = bytes[at];
        if (character < 0x80) {
            ++at;
        } else {
            U8_NEXT(bytes, at, size, character);
        }
        if (character < ' ') {
            traits.severalLines |= character == '\n' || character == '\r';
            traits.carriageReturn |= character == '\r';
            traits.forbidden |= character != '\n' && character != '\r' && character != '\t';
        } else {
            traits.forbidden |= character == firstNoncharacter || character == lastNoncharacter;
        }
    }
    return traits;
}

bool IsBlank(char c) {
    return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

}  // namespace

bool AddressSurvey::IsInList() const {
    return std::find(isElement.begin(), isElement.end(), true) != isElement.end();
}

void AddressSurvey::Add(RowTree::Kind kind, std::string_view text, ValueSpool& spool) {
    if (kind == RowTree::Kind::Null) {
        ++nulls;
        return;
    }
    if (text.empty()) {
        ++empties;
        return;
    }
    if (kind == RowTree::Kind::Text) {
        ++texts;
        AddText(text);
    } else {
        ++(kind == RowTree::Kind::Number ? numbers : words);
        longest = std::max(longest, text.size());
    }
    if (kind != RowTree::Kind::Word && IsInteger(text)) {
        ++integers;
    }
    Distinguish(text, spool);
}

void AddressSurvey::AddText(std::string_view text) {
    const TextTraits traits = TraitsOf(text);
    longest = std::max(longest, traits.length);
    severalLines += traits.severalLines ? 1 : 0;
    carriageReturns += traits.carriageReturn ? 1 : 0;
    forbidden += traits.forbidden ? 1 : 0;
    outerBlanks += IsBlank(text.front()) || IsBlank(text.back()) ? 1 : 0;
    commas += text.find(',') != text.npos ? 1 : 0;
    dates.Add(text);
}

// Whether all values are different shows in memory as long as there are few; from then on they go
// to the spool, unless they have turned out to repeat.
void AddressSurvey::Distinguish(std::string_view text, ValueSpool& spool) {
    const ValueHash hash = HashOf(text);
    repeats += values.Add(text, hash) ? 1 : 0;
    if (!values.HasMore() || isNoKey) {
        return;
    }
    const bool repeatsTooMuch = Values() >= kEnoughValues && repeats * kAllowedRepeats > Values();
    if (repeatsTooMuch || text.size() > kLongestKey || severalLines > 0) {
        isNoKey = true;
        return;
    }
    if (!spooled) {
        spooled = spool.AddColumn();
        for (const auto& [known, entry] : values.Entries()) {
            spool.Add(*spooled, known);
        }
    }
    spool.Add(*spooled, hash);
}

}  // namespace tool
