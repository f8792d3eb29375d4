#include "tool/report/survey_report.h"

#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "tool/report/json_text.h"
#include "tool/survey/key_rules.h"
#include "tool/survey/survey_words.h"

namespace tool {

namespace {

using nlohmann::ordered_json;

// The most frequent values of an address that are reported.
constexpr std::size_t kReportedValues = 50;

std::string_view FormatName(MapFormat format) {
    return format == MapFormat::Csv ? "csv" : format == MapFormat::Json ? "json" : "jsonl";
}

ordered_json PlaceAsJson(const SurveyPlace& place) {
    return {{"file", place.file}, {"row", place.row}, {"line", place.line}};
}

ordered_json ValuesAsJson(const AddressSurvey& address) {
    ordered_json values = ordered_json::array();
    for (const ValueCounts::Entry& entry : address.values.Frequent(kReportedValues)) {
        ordered_json value = {{"value", entry.text}, {"count", entry.count}};
        if (!entry.isWhole) {
            value["cut"] = true;
        }
        values.push_back(std::move(value));
    }
    return values;
}

// An empty format stands for ISO 8601.
ordered_json DatesAsJson(const AddressSurvey& address) {
    ordered_json formats = ordered_json::array();
    for (const std::string& format : address.dates.Formats()) {
        formats.push_back(format.empty() ? "ISO 8601" : format);
    }
    return {{"count", address.dates.Dates()},
            {"formats", std::move(formats)},
            {"zone", !address.dates.LacksZone()}};
}

ordered_json AddressAsJson(const Survey& survey, AddressRef ref) {
    const SourceSurvey& source = survey.sources[ref.source];
    const AddressSurvey& address = survey.At(ref);
    ordered_json json = {{"address", AddressText(source, address)},
                         {"kind", KindText(address)},
                         {"rows", address.rows},
                         {"values", address.Values()},
                         {"empty", address.empties},
                         {"null", address.nulls},
                         {"texts", address.texts},
                         {"numbers", address.numbers},
                         {"words", address.words},
                         {"objects", address.objects},
                         {"lists", address.lists},
                         {"longest", address.longest},
                         {"several_lines", address.severalLines},
                         {"carriage_returns", address.carriageReturns},
                         {"forbidden_characters", address.forbidden},
                         {"outer_blanks", address.outerBlanks},
                         {"different", nullptr},
                         {"first", nullptr},
                         {"frequent", ValuesAsJson(address)},
                         {"remarks", ordered_json::array()}};
    if (address.column) {
        json["column"] = *address.column + 1;
    }
    if (address.distinct) {
        json["different"] = *address.distinct;
    }
    if (address.rows > 0) {
        json["first"] = PlaceAsJson(address.first);
    }
    if (address.dates.Dates() > 0) {
        json["dates"] = DatesAsJson(address);
    }
    for (const Remark& remark : Remarks(survey, ref)) {
        json["remarks"].push_back(remark.text);
    }
    return json;
}

ordered_json KeysAsJson(const SourceSurvey& source) {
    ordered_json keys = ordered_json::array();
    const auto text = [&](const AddressSurvey& address) { return AddressText(source, address); };
    for (const AddressSurvey& address : source.addresses) {
        if (IsKey(source, address) && CanBeKey(address)) {
            keys.push_back({text(address)});
        }
    }
    for (const KeyPair& pair : source.keyPairs) {
        keys.push_back({text(source.addresses[pair.first]), text(source.addresses[pair.second])});
    }
    return keys;
}

// All members of a source but its addresses: these may be many, and are written one by one.
ordered_json SourceHead(const SourceSurvey& source) {
    ordered_json files = ordered_json::array();
    for (const SurveyFile& file : source.group.files) {
        files.push_back(file.name);
    }
    ordered_json json = {{"name", source.group.name},
                         {"files", std::move(files)},
                         {"format", FormatName(source.group.format)}};
    if (source.IsCsv()) {
        json["separator"] = std::string(1, source.guess.csv.separator);
        json["encoding"] = source.guess.csv.charset;
        json["encoding_guessed"] = source.guess.isEncodingGuessed;
    }
    if (source.guess.rows) {
        json["rows_in"] = *source.guess.rows;
    }
    json["rows"] = source.rows;
    json["rejected"] = source.badRows;
    json["bad_rows"] = ordered_json::array();
    for (const SourceSurvey::BadRow& row : source.shownBadRows) {
        ordered_json bad = PlaceAsJson(row.place);
        bad["error"] = row.error;
        json["bad_rows"].push_back(std::move(bad));
    }
    json["keys"] = KeysAsJson(source);
    json["remarks"] = Remarks(source);
    return json;
}

}  // namespace

void SurveyReport::Write(const Survey& survey) {
    m_file.Append("{\"sources\":[");
    for (std::size_t place = 0; place < survey.sources.size(); ++place) {
        const SourceSurvey& source = survey.sources[place];
        std::string head = JsonText(SourceHead(source));
        head.pop_back();
        m_file.Append((place == 0 ? "\n" : ",\n") + head + ",\"addresses\":[");
        for (std::size_t address = 0; address < source.addresses.size(); ++address) {
            m_file.Append((address == 0 ? "\n" : ",\n") +
                          JsonText(AddressAsJson(survey, {place, address})));
        }
        m_file.Append("]}");
    }
    m_file.Append("],\"not_read\":" + JsonText(survey.notRead) + "}\n");
    m_file.Finish();
}

}  // namespace tool
