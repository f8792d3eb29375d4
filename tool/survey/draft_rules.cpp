#include "tool/survey/draft_rules.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

#include "tool/survey/draft_names.h"
#include "tool/survey/key_rules.h"
#include "tool/survey/survey_words.h"

namespace tool {

namespace {

constexpr std::size_t kLongestState = 30;  // as a schema file has it
constexpr std::size_t kMostChoices = 12;
constexpr std::uint64_t kOftenEnough = 3;

void SuggestChoices(DraftField& field, const AddressSurvey& address) {
    const std::size_t distinct = address.values.Distinct();
    const auto entries = address.values.Frequent(kMostChoices);
    if (address.values.HasMore() || distinct < 2 || distinct > kMostChoices ||
        address.Values() < distinct * kOftenEnough || address.severalLines > 0 ||
        !std::all_of(entries.begin(), entries.end(),
                     [](const auto& entry) { return entry.isWhole; })) {
        return;
    }
    std::vector<std::string> words;
    words.reserve(entries.size());
    for (const auto& entry : entries) {
        words.push_back(YamlText(entry.text));
    }
    field.suggestion = fmt::format("{{type: choice, choices: [{}]}}", fmt::join(words, ", "));
}

}  // namespace

bool IsBelow(const AddressSurvey& address, const AddressSurvey& above) {
    return address.steps.size() > above.steps.size() &&
           std::equal(above.steps.begin(), above.steps.end(), address.steps.begin()) &&
           std::equal(above.isElement.begin(), above.isElement.end(), address.isElement.begin());
}

bool CanBeState(const AddressSurvey& address) {
    const std::string name = LowerLastName(address);
    const auto& entries = address.values.Entries();
    return (name == "status" || name == "state") && address.texts > 0 && address.integers == 0 &&
           address.texts == address.Values() && address.IsScalarOnly() && !address.IsInList() &&
           !address.values.HasMore() && entries.size() <= kMostStates &&
           address.longest <= kLongestState && address.forbidden == 0 && address.outerBlanks == 0 &&
           address.severalLines == 0 &&
           std::all_of(entries.begin(), entries.end(),
                       [](const auto& entry) { return entry.second.isWhole; });
}

bool AreWholeNumbers(const AddressSurvey& address) {
    return address.Values() > 0 && address.integers == address.Values();
}

void SetKind(DraftField& field, const AddressSurvey& address) {
    const std::vector<std::string> formats = address.dates.Formats();
    const bool areTexts = address.texts == address.Values();
    if (areTexts && address.dates.AreDates() && formats.size() == 1) {
        field.kind = "datetime";
        if (!formats.front().empty()) {
            field.date = formats.front();
        }
    } else if (AreWholeNumbers(address)) {
        field.kind = "integer";
    } else if (address.words > 0 && address.words == address.Values()) {
        field.kind = "choice";
        field.choices = {"true", "false"};
    } else {
        field.kind = address.severalLines > 0 ? "multiline" : "text";
        SuggestChoices(field, address);
    }
}

void AddNotes(DraftField& field, const Survey& survey, AddressRef ref) {
    const AddressSurvey& address = survey.At(ref);
    for (const Remark& remark : Remarks(survey, ref)) {
        switch (remark.kind) {
            case Remark::Kind::Elsewhere:
                if (!field.reference && !field.isKey) {
                    field.notes.push_back({remark.text + ": should this refer to them?", true});
                }
                break;
            case Remark::Kind::NotAllDates:
                field.notes.push_back({remark.text + ". A field of type datetime takes dates "
                                                     "only; this one is a text",
                                       true});
                break;
            case Remark::Kind::NoValueWord:
                field.notes.push_back(
                    {remark.text + ": if that means no value, say so with null_if", true});
                break;
            case Remark::Kind::Commas:
                if (!field.reference && !field.isKey && !field.isState) {
                    field.notes.push_back({remark.text + ": where they part several values, "
                                                         "split: \",\" takes these apart",
                                           true});
                }
                break;
            case Remark::Kind::OuterBlanks:
            case Remark::Kind::Forbidden:
                field.notes.push_back({remark.text, false});
                break;
            default:
                break;
        }
    }
    if (address.dates.AreDates() && address.dates.Formats().size() > 1) {
        field.notes.push_back(
            {fmt::format("dates of which it is not clear which number is the day: with type "
                         "datetime, date: {}",
                         fmt::join(address.dates.Formats(), " or ")),
             true});
    }
    if (field.reference && address.values.HasMore()) {
        field.notes.push_back({fmt::format("only {} different values were looked for; where "
                                           "others are not there, records are rejected, unless "
                                           "known_only: true leaves these values out",
                                           ValueCounts::kLimit),
                               true});
    }
}

}  // namespace tool
