#include "tool/survey/draft_text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <string_view>

#include "tool/map/file_ending.h"
#include "tool/survey/draft_names.h"
#include "tool/survey/survey_words.h"
#include "tool/survey/value_counts.h"
#include "tool/text/visible_text.h"

namespace tool {

namespace {

constexpr std::size_t kLongestNote = 400;

// Comments come from the data, too, and must stay comments.
std::string Comment(const DraftNote& note, std::string_view indent) {
    return fmt::format("{}# {}{}\n", indent, note.mustDecide ? "decide: " : "",
                       VisibleText(Beginning(note.text, kLongestNote)));
}

std::string Comments(const std::vector<DraftNote>& notes, std::string_view indent) {
    std::string text;
    for (const DraftNote& note : notes) {
        text += Comment(note, indent);
    }
    return text;
}

std::string YamlList(const std::vector<std::string>& texts) {
    std::vector<std::string> words;
    words.reserve(texts.size());
    for (const std::string& text : texts) {
        words.push_back(YamlText(text));
    }
    return fmt::format("[{}]", fmt::join(words, ", "));
}

std::string FieldSchema(const Draft& draft, const DraftType& type, const DraftField& field) {
    std::string text = "{type: " + field.kind;
    if (field.isUnique || (field.isKey && type.HasStates())) {
        text += ", unique: true";
    }
    if (field.isKey) {
        text += ", required: true";
    }
    if (!field.choices.empty()) {
        text += ", choices: " + YamlList(field.choices);
    }
    if (field.reference) {
        text += ", to: " + draft.types[field.reference->type].name;
    }
    return text + "}";
}

std::string TypeSchema(const Draft& draft, const DraftType& type) {
    std::string text = fmt::format("  {}:\n", type.name);
    if (type.HasStates()) {
        text += fmt::format("    prefix: {}\n", type.prefix);
        text += Comment(
            {"the states; the first one is that of records without one. Are they all?", true},
            "    ");
        text += fmt::format("    states: {}\n", YamlList(type.states));
    } else if (const DraftField* const key = type.Key()) {
        text += fmt::format("    key: [{}]\n", key->name);
    }
    text += "    fields:\n";
    for (const DraftField& field : type.fields) {
        if (field.isState) {
            continue;
        }
        if (!field.suggestion.empty()) {
            text += Comment({"few values: could be " + field.suggestion}, "      ");
        }
        text += fmt::format("      {}: {}\n", field.name, FieldSchema(draft, type, field));
    }
    return text;
}

// What a map writes of a reference to a type.
std::string ByField(const Draft& draft, const DraftReference& reference) {
    const DraftType& target = draft.types[reference.type];
    const DraftField* const key = target.Key();
    const bool isKey = !target.HasStates() && key != nullptr && key->name == reference.field;
    return isKey ? "" : ", by: " + reference.field;
}

std::string FieldValue(const Draft& draft, const DraftField& field) {
    if (!field.pattern.empty()) {
        const std::string by = field.reference ? ByField(draft, *field.reference) : "";
        return fmt::format("{{text: {}{}}}", field.pattern, by);
    }
    std::string more;
    if (field.date) {
        more += ", date: " + YamlText(*field.date);
    }
    if (field.join) {
        more += ", join: " + YamlText(*field.join);
    }
    if (field.reference) {
        more += ByField(draft, *field.reference);
    }
    return more.empty() ? field.address : fmt::format("{{from: {}{}}}", field.address, more);
}

std::string SourceMap(const SourceSurvey& source, const DraftSource& draft) {
    std::string text = Comments(draft.notes, "  ");
    text += fmt::format("  {}:\n    files: {}\n", draft.name,
                        source.group.patterns.size() == 1 ? YamlText(source.group.patterns.front())
                                                          : YamlList(source.group.patterns));
    const FileEnding* const ending = EndingOf(source.group.patterns.front());
    if (ending == nullptr || ending->format != source.group.format) {
        text += fmt::format("    format: {}\n", source.IsCsv()                           ? "csv"
                                                : source.group.format == MapFormat::Json ? "json"
                                                                                         : "jsonl");
    }
    const bool isOwnEnding = ending != nullptr && ending->format == source.group.format;
    const char separator = isOwnEnding ? ending->separator : ',';
    if (source.IsCsv() && source.guess.csv.separator != separator) {
        text += fmt::format("    separator: {}\n",
                            YamlText(std::string(1, source.guess.csv.separator)));
    }
    if (source.guess.isEncodingGuessed) {
        text += Comment({"the files are not UTF-8, and what they are is a guess: do the letters "
                         "beyond ASCII look right in what the survey shows?",
                         true},
                        "    ");
    }
    if (source.IsCsv() && source.guess.csv.charset != "UTF-8") {
        text += fmt::format("    encoding: {}\n", YamlText(source.guess.csv.charset));
    }
    if (source.guess.rows) {
        text += fmt::format("    rows: {}\n",
                            YamlText(fmt::format("{}", fmt::join(*source.guess.rows, "/"))));
    }
    if (!draft.ignored.empty()) {
        text += "    ignore:\n";
        for (const DraftIgnored& ignored : draft.ignored) {
            text += Comment(ignored.note, "      ");
            text += fmt::format("      - {}\n", ignored.address);
        }
    }
    return text;
}

std::string StepHead(const Survey& survey, const Draft& draft, const DraftType& type) {
    std::string text = fmt::format("  - records: {}\n    source: {}\n", type.name,
                                   draft.sources[type.source].name);
    if (type.each) {
        text +=
            fmt::format("    each: {}\n",
                        YamlText(AddressText(survey.sources[type.source], survey.At(*type.each))));
    }
    if (type.Key() != nullptr) {
        text += fmt::format("    key: {}\n", type.Key()->name);
    }
    return text;
}

std::string TypeStep(const Survey& survey, const Draft& draft, const DraftType& type) {
    std::string text = Comments(type.notes, "  ") + StepHead(survey, draft, type);
    if (type.isRepeated) {
        text += "    same_key: first\n";
    }
    text += "    fields:\n";
    for (const DraftField& field : type.fields) {
        if (field.IsMapped() && (!field.reference || !field.reference->isLate)) {
            text += Comments(field.notes, "      ");
            text += fmt::format("      {}: {}\n", field.name, FieldValue(draft, field));
        }
    }
    return text;
}

// The references that wait until all records are there.
std::string LateStep(const Survey& survey, const Draft& draft, const DraftType& type) {
    std::string fields;
    std::string tests;
    std::size_t late = 0;
    for (const DraftField& field : type.fields) {
        if (field.reference && field.reference->isLate) {
            fields += Comments(field.notes, "      ");
            fields += fmt::format("      {}: {}\n", field.name, FieldValue(draft, field));
            tests = fmt::format("    when: [{{from: {}, has_value: true}}]\n", field.address);
            ++late;
        }
    }
    if (late == 0) {
        return {};
    }
    const DraftField& key = *type.Key();
    return Comment({"records refer to others that come later, so this is set when all are there"},
                   "  ") +
           StepHead(survey, draft, type) + "    mode: update\n" + (late == 1 ? tests : "") +
           fmt::format("    fields:\n      {}: {}\n", key.name, FieldValue(draft, key)) + fields;
}

std::string HistoryStep(const Survey& survey, const Draft& draft, const DraftStep& step) {
    const DraftType& type = draft.types[step.type];
    std::string text = Comments(step.notes, "  ");
    text +=
        fmt::format("  - history: {}\n    source: {}\n    each: {}\n    key: {}\n    fields:\n",
                    type.name, draft.sources[step.each.source].name,
                    YamlText(AddressText(survey.sources[step.each.source], survey.At(step.each))),
                    type.Key()->name);
    for (const auto& [field, value] : step.values) {
        text += fmt::format("      {}: {}\n", field, value);
    }
    return text;
}

constexpr std::string_view kHead =
    "# Drafted by ztimport survey. Lines that begin with \"decide:\" wait for a person.\n";

}  // namespace

std::string SchemaDraft(const Draft& draft) {
    std::string text = std::string(kHead) + "record_types:\n";
    for (const std::size_t type : draft.order) {
        text += TypeSchema(draft, draft.types[type]);
    }
    return text;
}

std::string MapDraft(const Survey& survey, const Draft& draft) {
    std::string text = std::string(kHead) + "map: 1\n";
    if (draft.needsZone) {
        text += Comment({"some times name no zone; name that of the clocks that wrote them, "
                         "such as Europe/Berlin",
                         true},
                        "");
        text += "zone: UTC\n";
    }
    text += "\nsources:\n";
    for (std::size_t source = 0; source < draft.sources.size(); ++source) {
        const bool isUsed =
            std::any_of(draft.types.begin(), draft.types.end(),
                        [&](const DraftType& type) { return type.source == source; });
        text += isUsed ? SourceMap(survey.sources[source], draft.sources[source])
                       : Comment({FilesText(survey.sources[source]) + " is not in the map"}, "  ") +
                             Comments(draft.sources[source].notes, "  ");
    }
    text += "\nsteps:\n";
    for (const std::size_t type : draft.order) {
        text += TypeStep(survey, draft, draft.types[type]) + '\n';
    }
    for (const std::size_t type : draft.order) {
        const std::string step = LateStep(survey, draft, draft.types[type]);
        text += step.empty() ? "" : step + '\n';
    }
    for (const DraftStep& step : draft.history) {
        text += HistoryStep(survey, draft, step) + '\n';
    }
    text.pop_back();
    return text;
}

}  // namespace tool
