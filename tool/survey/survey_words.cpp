#include "tool/survey/survey_words.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <array>
#include <string_view>

#include "tool/survey/key_rules.h"
#include "tool/text/number_text.h"

namespace tool {

namespace {

// What is shown of a value, in bytes.
constexpr std::size_t kShownSize = 40;

// Longer texts with commas are sentences and no lists, in characters.
constexpr std::size_t kLongestList = 100;
// Of pairs that could be the key.
constexpr std::size_t kShownPairs = 3;
// One in so many values must have commas for them to be worth a word.
constexpr std::uint64_t kCommaShare = 3;

// Words by which exports say that there is no value.
constexpr std::array<std::string_view, 14> kNoValueWords = {"NULL", "null", "Null", "N/A",   "n/a",
                                                            "NA",   "None", "none", "nil",   "-",
                                                            "--",   "\\N",  "#N/A", "(none)"};

std::string EscapedStep(std::string_view step) {
    std::string text;
    for (const char c : step) {
        if (c == '~') {
            text += "~0";
        } else if (c == '/') {
            text += "~1";
        } else {
            text += c;
        }
    }
    return text;
}

std::string CharacterText(char separator) {
    return separator == '\t' ? "tabs" : separator == ' ' ? "blanks" : std::string(1, separator);
}

std::string DateText(const DateGuess& dates) {
    std::vector<std::string> formats = dates.Formats();
    std::replace(formats.begin(), formats.end(), std::string(), std::string("ISO 8601"));
    return fmt::format("date ({})", fmt::join(formats, " or "));
}

std::string TextKind(const AddressSurvey& address) {
    if (address.dates.AreDates()) {
        return DateText(address.dates);
    }
    if (address.numbers == 0 && address.integers == address.texts) {
        return "whole number";
    }
    return address.severalLines > 0 ? "text of several lines" : "text";
}

std::string NumberKind(const AddressSurvey& address) {
    const bool areWhole = address.texts == 0 && address.integers == address.numbers;
    return areWhole ? "whole number" : "number";
}

void AddCount(std::vector<Remark>& remarks, Remark::Kind kind, std::uint64_t count,
              std::string_view what) {
    if (count > 0) {
        remarks.push_back(
            {kind, fmt::format("{} {} {}", Grouped(count), count == 1 ? "value" : "values", what)});
    }
}

void AddKeyRemark(std::vector<Remark>& remarks, const SourceSurvey& source,
                  const AddressSurvey& address) {
    if (source.rows < 2 || address.dates.AreDates()) {
        return;
    }
    if (IsKey(source, address)) {
        remarks.push_back({Remark::Kind::Key, "could be the key: each row has another value"});
    } else if (address.IsUnique() && address.Values() > 1 && address.severalLines == 0) {
        remarks.push_back({Remark::Kind::Key, "no value comes twice"});
    } else if (address.distinct && address.Values() == source.rows && !address.IsInList() &&
               *address.distinct * 10 > source.rows * 9) {
        remarks.push_back(
            {Remark::Kind::Key,
             fmt::format("nearly a key: {} of {} rows repeat a value",
                         Grouped(source.rows - *address.distinct), Grouped(source.rows))});
    }
}

void AddElsewhere(std::vector<Remark>& remarks, const Survey& survey, AddressRef ref) {
    for (const ValuesElsewhere& elsewhere : survey.elsewhere) {
        if (!(elsewhere.from == ref)) {
            continue;
        }
        const SourceSurvey& source = survey.sources[elsewhere.in.source];
        const std::string_view all =
            survey.At(ref).values.HasMore() ? "all of the first 500 different" : "all";
        const std::string which = elsewhere.AreAll()
                                      ? std::string(all)
                                      : fmt::format("{} of {} different", Grouped(elsewhere.found),
                                                    Grouped(elsewhere.lookedFor));
        remarks.push_back(
            {Remark::Kind::Elsewhere,
             fmt::format("{} values stand in {} of {}", which,
                         AddressText(source, survey.At(elsewhere.in)), source.group.name)});
    }
}

void AddNoValueWords(std::vector<Remark>& remarks, const AddressSurvey& address) {
    for (const auto& [hash, entry] : address.values.Entries()) {
        const bool isWord = std::find(kNoValueWords.begin(), kNoValueWords.end(), entry.text) !=
                            kNoValueWords.end();
        if (isWord && entry.isWhole && address.values.Distinct() > 1) {
            AddCount(remarks, Remark::Kind::NoValueWord, entry.count,
                     fmt::format("\"{}\"", entry.text));
        }
    }
}

}  // namespace

std::string AddressText(const SourceSurvey& source, const AddressSurvey& address) {
    if (address.steps.empty()) {
        return ".";
    }
    if (source.IsCsv()) {
        return address.steps.front();
    }
    std::string text;
    for (const std::string& step : address.steps) {
        text += (text.empty() ? "" : "/") + EscapedStep(step);
    }
    return text;
}

std::string FormatText(const SourceSurvey& source) {
    switch (source.group.format) {
        case MapFormat::Csv:
            return fmt::format("CSV, separated by {}, {}{}",
                               CharacterText(source.guess.csv.separator), source.guess.csv.charset,
                               source.guess.isEncodingGuessed ? " (a guess)" : "");
        case MapFormat::JsonLines:
            return "JSON Lines";
        default:
            return source.guess.rows
                       ? fmt::format("JSON, rows in {}", fmt::join(*source.guess.rows, "/"))
                       : "JSON";
    }
}

std::string FilesText(const SourceSurvey& source) {
    const std::size_t files = source.group.files.size();
    return files == 1 ? source.group.files.front().name
                      : fmt::format("{} ({})", fmt::join(source.group.patterns, ", "),
                                    CountOf(files, "file"));
}

std::string KindText(const AddressSurvey& address) {
    std::vector<std::string> kinds;
    if (address.texts > 0) {
        kinds.push_back(TextKind(address));
    }
    if (address.numbers > 0) {
        kinds.push_back(NumberKind(address));
    }
    if (address.words > 0) {
        kinds.emplace_back("true or false");
    }
    if (address.objects > 0) {
        kinds.emplace_back("object");
    }
    if (address.lists > 0) {
        kinds.emplace_back("list");
    }
    return kinds.empty() ? "no value" : fmt::format("{}", fmt::join(kinds, ", "));
}

std::string DistinctText(const AddressSurvey& address) {
    return address.distinct ? Grouped(*address.distinct)
                            : fmt::format("more than {}", Grouped(ValueCounts::kLimit));
}

std::string ValuesText(const AddressSurvey& address, std::size_t most) {
    const auto entries = address.values.Frequent(most);
    const bool areRepeated = !entries.empty() && entries.front().count > 1;
    std::vector<std::string> texts;
    for (const ValueCounts::Entry& entry : entries) {
        const std::string_view shown = Beginning(entry.text, kShownSize);
        const bool isWhole = entry.isWhole && shown.size() == entry.text.size();
        const std::string text = std::string(shown) + (isWhole ? "" : "...");
        texts.push_back(areRepeated ? fmt::format("{} ({})", text, Grouped(entry.count)) : text);
    }
    if (texts.empty()) {
        return {};
    }
    return fmt::format("{}{}", areRepeated ? "" : "such as ", fmt::join(texts, ", "));
}

std::vector<Remark> Remarks(const Survey& survey, AddressRef ref) {
    using Kind = Remark::Kind;
    const AddressSurvey& address = survey.At(ref);
    std::vector<Remark> remarks;
    AddKeyRemark(remarks, survey.sources[ref.source], address);
    AddElsewhere(remarks, survey, ref);
    const DateGuess& dates = address.dates;
    if (dates.Dates() > 0 && !dates.AreDates()) {
        remarks.push_back(
            {Kind::NotAllDates,
             fmt::format("{} of {} texts are a {}, others are not: {}", Grouped(dates.Dates()),
                         Grouped(dates.Texts()), DateText(dates), dates.Exception())});
    } else if (dates.AreDates() && dates.LacksZone()) {
        remarks.push_back({Kind::NoZone, "the times name no zone"});
    }
    AddNoValueWords(remarks, address);
    if (address.severalLines == 0 && address.longest <= kLongestList && !dates.AreDates() &&
        address.commas * kCommaShare >= address.Values()) {
        AddCount(remarks, Kind::Commas, address.commas, "with commas");
    }
    AddCount(remarks, Kind::CarriageReturns, address.carriageReturns, "with carriage returns");
    AddCount(remarks, Kind::OuterBlanks, address.outerBlanks, "with blanks at an end");
    AddCount(remarks, Kind::Forbidden, address.forbidden,
             "with control characters that XML forbids");
    return remarks;
}

std::vector<std::string> Remarks(const SourceSurvey& source) {
    std::vector<std::string> remarks;
    for (const SourceSurvey::BadRow& row : source.shownBadRows) {
        remarks.push_back(fmt::format("{}, row {}, line {}: {}", row.place.file,
                                      Grouped(row.place.row), Grouped(row.place.line), row.error));
    }
    if (source.badRows > source.shownBadRows.size()) {
        remarks.push_back(fmt::format("and {} more that cannot be used",
                                      CountOf(source.badRows - source.shownBadRows.size(), "row")));
    }
    for (std::size_t i = 0; i < source.keyPairs.size() && i < kShownPairs; ++i) {
        const KeyPair& pair = source.keyPairs[i];
        remarks.push_back(
            fmt::format("{} and {} together could be the key: no two rows have the same",
                        AddressText(source, source.addresses[pair.first]),
                        AddressText(source, source.addresses[pair.second])));
    }
    if (source.endsEarly) {
        remarks.emplace_back("what is behind the last of these rows could not be read");
    }
    if (source.nuls > 0) {
        remarks.push_back(CountOf(source.nuls, "NUL character"));
    }
    if (source.repeatedMembers > 0) {
        remarks.push_back(fmt::format("{} named twice in one object, such as {}",
                                      CountOf(source.repeatedMembers, "member"),
                                      source.repeatedName));
    }
    for (const SourceSurvey::Outside& outside : source.outside) {
        remarks.push_back(fmt::format("beside the rows: {} ({})", outside.address,
                                      CountOf(outside.values, "value")));
    }
    if (source.valuesBeyond > 0) {
        remarks.push_back(fmt::format("more than {} addresses; {} at further ones",
                                      Grouped(SourceSurvey::kMaxAddresses),
                                      CountOf(source.valuesBeyond, "value")));
    }
    return remarks;
}

}  // namespace tool
