#include "tool/survey/draft_names.h"

#include <fmt/format.h>
#include <unicode/translit.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>
#include <memory>

#include "tool/text/visible_text.h"

namespace tool {

namespace {

// What databases and schema files keep for themselves.
constexpr std::array<std::string_view, 8> kReserved = {"dbid", "tableoid", "xmin", "cmin",
                                                       "xmax", "cmax",     "ctid", "oid"};
constexpr std::array<std::string_view, 3> kReservedBeginnings = {"zt_", "sqlite_", "pg_"};
// A scalar that may be taken for something else than a text.
constexpr std::array<std::string_view, 10> kWords = {"null", "true", "false", "yes", "no",
                                                     "on",   "off",  "y",     "n",   "~"};

std::string ToLatin(std::string_view text) {
    UErrorCode error = U_ZERO_ERROR;
    static const std::unique_ptr<icu::Transliterator> kLatin(icu::Transliterator::createInstance(
        "Any-Latin; Latin-ASCII; Lower", UTRANS_FORWARD, error));
    auto unicode = icu::UnicodeString::fromUTF8(
        icu::StringPiece(text.data(), static_cast<std::int32_t>(text.size())));
    if (kLatin) {
        kLatin->transliterate(unicode);
    }
    std::string latin;
    unicode.toUTF8String(latin);
    return latin;
}

bool IsNameCharacter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

bool IsReserved(const std::string& name) {
    return std::find(kReserved.begin(), kReserved.end(), name) != kReserved.end() ||
           std::any_of(kReservedBeginnings.begin(), kReservedBeginnings.end(),
                       [&](std::string_view beginning) { return name.starts_with(beginning); });
}

bool IsPlainYaml(std::string_view text) {
    const auto isSafe = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_' || c == '/' || c == '.' || c == '-';
    };
    const bool isLetter = !text.empty() && isSafe(text[0]) && text[0] > '9';
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    // "*" is plain behind a way to it, and an alias at the beginning.
    return isLetter && std::find(kWords.begin(), kWords.end(), lower) == kWords.end() &&
           std::all_of(text.begin(), text.end(), [&](char c) { return isSafe(c) || c == '*'; });
}

std::string QuotedEscape(std::int32_t character, std::string_view bytes) {
    constexpr std::int32_t lastOfPlane = 0xFFFF;
    if (character < 0) {
        return "\xEF\xBF\xBD";
    }
    (void)bytes;
    return character <= lastOfPlane ? fmt::format("\\u{:04x}", static_cast<unsigned>(character))
                                    : fmt::format("\\U{:08x}", static_cast<unsigned>(character));
}

}  // namespace

std::string NameFor(std::string_view text, std::size_t limit) {
    std::string name;
    for (const char c : ToLatin(text)) {
        if (IsNameCharacter(c)) {
            name += c;
        } else if (!name.empty() && name.back() != '_') {
            name += '_';
        }
    }
    name.resize(std::min(name.size(), limit));
    while (name.ends_with('_')) {
        name.pop_back();
    }
    if (name.empty()) {
        return "value";
    }
    if (IsReserved(name) || (name[0] >= '0' && name[0] <= '9')) {
        name = NameFor("of_" + name, limit);
    }
    return name;
}

std::string DraftNames::Take(std::string_view text) {
    std::string name = NameFor(text, m_limit);
    for (std::size_t number = 2; !m_taken.insert(name).second; ++number) {
        const std::string ending = fmt::format("_{}", number);
        name = NameFor(text, m_limit - ending.size()) + ending;
    }
    return name;
}

std::string YamlText(std::string_view text) {
    if (IsPlainYaml(text)) {
        return std::string(text);
    }
    std::string quoted;
    for (const char c : text) {
        quoted += c == '"' || c == '\\' ? "\\" : "";
        quoted += c;
    }
    return '"' + Escaped(quoted, QuotedEscape) + '"';
}

}  // namespace tool
