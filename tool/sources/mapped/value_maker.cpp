#include "tool/sources/mapped/value_maker.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <unicode/locid.h>
#include <unicode/unistr.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <utility>

#include "tool/packet/importer_text.h"

namespace tool {

namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";
// What an error shows of a value.
constexpr std::size_t kShown = 60;
// What a note shows of one: all of it, unless that is far from what tables have.
constexpr std::size_t kNoted = 1000;
// What a text takes besides its characters, so that many empty ones count, too.
constexpr std::size_t kPerText = sizeof(std::string);

std::string Abridged(std::string_view text, std::size_t most) {
    if (text.size() <= most) {
        return std::string(text);
    }
    std::size_t size = most;
    while (size > 0 && (static_cast<unsigned char>(text[size]) & 0xC0U) == 0x80U) {
        --size;
    }
    return std::string(text.substr(0, size)) + "...";
}

// Built anew, since changing it in place would move its rest again and again. False when it would
// become larger than `most`.
bool ReplaceAll(std::string& text, const std::string& from, const std::string& to,
                std::size_t most) {
    std::size_t next = text.find(from);
    if (next == std::string::npos) {
        return true;
    }
    std::string replaced;
    std::size_t at = 0;
    for (; next != std::string::npos; next = text.find(from, at)) {
        replaced.append(text, at, next - at).append(to);
        at = next + from.size();
        if (replaced.size() > most) {
            return false;
        }
    }
    text = std::move(replaced.append(text, at));
    return true;
}

void ChangeCase(std::string& text, LetterCase letterCase) {
    const bool isAscii = std::all_of(text.begin(), text.end(), [](char c) { return c >= 0; });
    if (isAscii) {
        for (char& c : text) {
            if (letterCase == LetterCase::Lower) {
                c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
            } else {
                c = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
            }
        }
        return;
    }
    // The same everywhere, whatever the locale.
    icu::UnicodeString units = icu::UnicodeString::fromUTF8(text);
    if (letterCase == LetterCase::Lower) {
        units.toLower(icu::Locale::getRoot());
    } else {
        units.toUpper(icu::Locale::getRoot());
    }
    text.clear();
    units.toUTF8String(text);
}

// Control characters that XML has no way to write. All texts are free of NUL.
bool IsForbidden(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20U && c != '\t' && c != '\n' && c != '\r';
}

}  // namespace

MadeValue ValueMaker::Make(const FieldPlan& plan, const RowItem& item) {
    const MapValue& value = plan.field->value;
    MadeValue made;
    if (value.constant) {
        made.texts.push_back(*value.constant);
    } else if (!value.pattern.empty()) {
        TakePattern(plan, item, made);
    } else {
        TakeFrom(plan, item, made);
    }
    if (made.error.empty()) {
        ChangeTexts(plan, made);
    }
    if (made.error.empty() && !value.knownOnly) {
        Finish(plan, made);
    }
    if (!made.error.empty()) {
        made.texts.clear();
    }
    return made;
}

void ValueMaker::TakeFrom(const FieldPlan& plan, const RowItem& item, MadeValue& value) {
    for (const MapAddress& address : plan.field->value.from) {
        if (TakeTexts(plan, item, address, value.texts, value.error) || !value.error.empty()) {
            return;
        }
    }
}

// Appends the texts at an address that are values. False when there are none.
bool ValueMaker::TakeTexts(const FieldPlan& plan, const RowItem& item, const MapAddress& address,
                           std::vector<std::string>& texts, std::string& error) {
    FindValues(item, address, m_nodes, m_found);
    const std::size_t before = texts.size();
    for (const FoundValue& found : m_found) {
        if (!found.isScalar) {
            error = fmt::format("at {} stands an object or a list, where one value is expected",
                                address.text);
            return false;
        }
        if (!found.isNull && !IsNoValue(found.text, *plan.nullIf)) {
            texts.emplace_back(found.text);
        }
    }
    return texts.size() > before;
}

void ValueMaker::TakePattern(const FieldPlan& plan, const RowItem& item, MadeValue& value) {
    value.texts.emplace_back();
    for (const TemplatePart& part : plan.field->value.pattern) {
        if (!value.error.empty()) {
            return;
        }
        if (part.address) {
            AppendPart(plan, item, part, value);
        } else {
            for (std::string& text : value.texts) {
                text += part.text;
            }
        }
    }
}

// A part that is a list makes a list of as many texts.
void ValueMaker::AppendPart(const FieldPlan& plan, const RowItem& item, const TemplatePart& part,
                            MadeValue& value) {
    std::vector<std::string> parts;
    TakeTexts(plan, item, *part.address, parts, value.error);
    std::vector<std::string> texts;
    std::size_t size = 0;
    for (const std::string& text : value.texts) {
        for (const std::string& found : parts) {
            size += text.size() + found.size() + kPerText;
            if (size > m_largest) {
                value.error = TooLarge("the lists in its template");
                return;
            }
            texts.push_back(text + found);
        }
    }
    value.texts = std::move(texts);
}

std::string ValueMaker::TooLarge(std::string_view what) const {
    return fmt::format("{} would make more than {} bytes of it", what, m_largest);
}

// Whether the map changes nothing about the texts that TakeTexts finds, as for most fields.
bool ValueMaker::LeavesAsItIs(const FieldPlan& plan) const {
    const MapValue& field = plan.field->value;
    return !field.from.empty() && !field.split && !field.trim && field.replace.empty() &&
           field.letterCase == LetterCase::AsIs && field.table == nullptr && !plan.isTime &&
           !field.cut && m_forbidden == ForbiddenCharacters::Keep;
}

void ValueMaker::ChangeTexts(const FieldPlan& plan, MadeValue& value) {
    if (LeavesAsItIs(plan)) {
        return;
    }
    const MapValue& field = plan.field->value;
    if (field.split) {
        std::vector<std::string> parts;
        for (const std::string& text : value.texts) {
            ForEachPart(text, *field.split,
                        [&](std::string_view part) { parts.emplace_back(part); });
        }
        value.texts = std::move(parts);
    }
    for (std::string& text : value.texts) {
        if (IsNoValue(text, *plan.nullIf)) {
            text.clear();
        } else {
            ChangeText(plan, text, value.error);
        }
        if (!value.error.empty()) {
            return;
        }
    }
    std::erase_if(value.texts, [](const std::string& text) { return text.empty(); });
}

void ValueMaker::ChangeText(const FieldPlan& plan, std::string& text, std::string& error) {
    const MapValue& field = plan.field->value;
    if (field.trim) {
        text = std::string(Trimmed(text));
    }
    for (const auto& [from, to] : field.replace) {
        if (!ReplaceAll(text, from, to, m_largest)) {
            error = TooLarge("'replace'");
            return;
        }
    }
    if (field.letterCase != LetterCase::AsIs) {
        ChangeCase(text, field.letterCase);
    }
    if (field.table != nullptr && !text.empty()) {
        LookUp(plan, text, error);
    }
    if (plan.isTime && !text.empty() && error.empty()) {
        MakeDate(plan, text, error);
    }
    if (field.cut) {
        Cut(plan, text);
    }
    if (error.empty()) {
        ReplaceForbidden(plan, text, error);
    }
}

void ValueMaker::LookUp(const FieldPlan& plan, std::string& text, std::string& error) {
    const MapTable& table = *plan.field->value.table;
    const auto found = table.entries.find(text);
    if (found != table.entries.end()) {
        text = found->second;
        return;
    }
    const std::string name = table.name.empty() ? "of " + plan.subject : "'" + table.name + "'";
    if (plan.field->value.unknown != UnknownValue::Keep) {
        m_notes.Add(MapNote::UnknownValue, name + '\n' + Abridged(text, kNoted));
    }
    switch (plan.field->value.unknown) {
        case UnknownValue::Reject:
            error =
                fmt::format("the table {} has no value for \"{}\"", name, Abridged(text, kShown));
            break;
        case UnknownValue::LeaveOut:
            text.clear();
            break;
        case UnknownValue::Replace:
            text = plan.field->value.unknownText;
            break;
        default:
            break;
    }
}

void ValueMaker::MakeDate(const FieldPlan& plan, std::string& text, std::string& error) {
    MadeDate made = ReadDate(text, plan.field->value.date, *plan.zone);
    if (made.cameTwice) {
        m_notes.Add(MapNote::DoubledTime, plan.subject);
    }
    text = std::move(made.text);
    error = std::move(made.error);
}

void ValueMaker::Cut(const FieldPlan& plan, std::string& text) {
    std::size_t characters = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        const bool begins = (static_cast<unsigned char>(text[at]) & 0xC0U) != 0x80U;
        if (begins && ++characters > *plan.field->value.cut) {
            text.resize(at);
            m_notes.Add(MapNote::CutText, plan.subject);
            return;
        }
    }
}

void ValueMaker::ReplaceForbidden(const FieldPlan& plan, std::string& text, std::string& error) {
    if (m_forbidden == ForbiddenCharacters::Keep) {
        return;
    }
    const auto count = std::count_if(text.begin(), text.end(), IsForbidden);
    if (count == 0) {
        return;
    }
    if (m_forbidden == ForbiddenCharacters::Reject) {
        error = fmt::format(
            "it holds the control character U+{:04X}, and the map rejects such",
            static_cast<unsigned>(*std::find_if(text.begin(), text.end(), IsForbidden)));
        return;
    }
    m_notes.Add(MapNote::ReplacedCharacter, plan.subject, static_cast<std::uint64_t>(count));
    std::string replaced;
    for (const char c : text) {
        if (IsForbidden(c)) {
            replaced += kReplacement;
        } else {
            replaced += c;
        }
    }
    text = std::move(replaced);
}

void ValueMaker::Finish(const FieldPlan& plan, MadeValue& value) {
    const MapValue& field = plan.field->value;
    if (!value.texts.empty()) {
        if (field.join) {
            value.texts = {fmt::format("{}", fmt::join(value.texts, *field.join))};
        } else if (field.pick != Pick::None) {
            value.texts = {field.pick == Pick::First ? value.texts.front() : value.texts.back()};
        }
    }
    if (value.texts.size() > 1 && !plan.isList) {
        value.error = fmt::format("it has {} values, where one is expected; join them, or pick one",
                                  value.texts.size());
    }
    if (value.texts.empty() && field.defaultText) {
        value.texts.push_back(*field.defaultText);
    }
    if (value.texts.empty() && field.required) {
        value.error = "it has no value, and the map requires one";
    }
}

bool ValueMaker::Holds(const std::vector<MapTest>& tests, const RowItem& item,
                       const std::vector<std::string>& nullIf) {
    return std::all_of(tests.begin(), tests.end(), [&](const MapTest& test) {
        FindValues(item, test.from, m_nodes, m_found);
        const auto isOneOf = [&](const FoundValue& found) {
            return found.isScalar && !found.isNull &&
                   std::find(test.texts.begin(), test.texts.end(), found.text) != test.texts.end();
        };
        const auto isValue = [&](const FoundValue& found) {
            return !found.isScalar || (!found.isNull && !IsNoValue(found.text, nullIf));
        };
        switch (test.kind) {
            case MapTest::Kind::OneOf:
                return std::any_of(m_found.begin(), m_found.end(), isOneOf);
            case MapTest::Kind::NoneOf:
                return std::none_of(m_found.begin(), m_found.end(), isOneOf);
            case MapTest::Kind::HasValue:
                return std::any_of(m_found.begin(), m_found.end(), isValue);
            default:
                return std::none_of(m_found.begin(), m_found.end(), isValue);
        }
    });
}

}  // namespace tool
