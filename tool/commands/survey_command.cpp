#include "tool/commands/survey_command.h"

#include <fmt/format.h>

#include <optional>

#include "tool/commands/output_guard.h"
#include "tool/io/charset_decoder.h"
#include "tool/process/usage_error.h"
#include "tool/survey/survey.h"
#include "tool/survey/survey_listing.h"

namespace tool {

namespace {

std::optional<MapFormat> FormatNamed(const std::string& word) {
    if (word.empty()) {
        return std::nullopt;
    }
    return word == "csv" ? MapFormat::Csv : word == "json" ? MapFormat::Json : MapFormat::JsonLines;
}

char SeparatorNamed(const std::string& text) {
    if (text == "tab" || text == "\\t") {
        return '\t';
    }
    if (text.size() != 1 || text[0] < ' ' || text[0] > '~' || text[0] == '"') {
        throw UsageError("--separator must be one ASCII character, or the word tab");
    }
    return text[0];
}

SurveyOptions OptionsOf(const SurveyRequest& request) {
    SurveyOptions options;
    options.format = FormatNamed(request.format);
    if (!request.separator.empty()) {
        options.separator = SeparatorNamed(request.separator);
    }
    if (!request.encoding.empty()) {
        if (!IsKnownCharset(request.encoding)) {
            throw UsageError(
                fmt::format("there is no encoding '{}'; encodings are called UTF-8, "
                            "windows-1252, ISO-8859-1, UTF-16",
                            request.encoding));
        }
        options.encoding = request.encoding;
    }
    return options;
}

}  // namespace

void RunSurvey(const SurveyRequest& request, std::ostream& out) {
    const SurveyOptions options = OptionsOf(request);
    const SurveyFiles files(request.sources, options.format);
    CheckOutputs(request, files);
    const Survey survey = SurveyAll(files, options);
    PrintSurvey(survey, out);
}

}  // namespace tool
