#include "tool/commands/survey_command.h"

#include <fmt/format.h>

#include <filesystem>
#include <optional>
#include <system_error>

#include "tool/commands/output_guard.h"
#include "tool/html/html_survey_report.h"
#include "tool/io/charset_decoder.h"
#include "tool/io/replacing_file.h"
#include "tool/process/usage_error.h"
#include "tool/report/survey_report.h"
#include "tool/survey/draft.h"
#include "tool/survey/draft_text.h"
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

// People work on drafts, so an earlier one is not replaced.
std::optional<ReplacingFile> OpenDraft(const std::string& option, const std::string& path) {
    std::error_code ignored;
    if (path.empty()) {
        return std::nullopt;
    }
    if (std::filesystem::is_regular_file(path, ignored) &&
        std::filesystem::file_size(path, ignored) > 0) {
        throw UsageError(
            fmt::format("{0} {1}: the file exists already, and may hold work on an "
                        "earlier draft; name a new one, or remove it",
                        option, path));
    }
    return std::optional<ReplacingFile>(std::in_place, path);
}

void Write(std::optional<ReplacingFile>& file, const std::string& text) {
    if (file) {
        file->Append(text);
        file->Finish();
    }
}

}  // namespace

void RunSurvey(const SurveyRequest& request, std::ostream& out) {
    const SurveyOptions options = OptionsOf(request);
    const SurveyFiles files(request.sources, options.format);
    CheckOutputs(request, files);
    std::optional<ReplacingFile> schema = OpenDraft("--write-schema", request.writeSchema);
    std::optional<ReplacingFile> map = OpenDraft("--write-map", request.writeMap);
    std::optional<SurveyReport> report;
    if (!request.report.empty()) {
        report.emplace(request.report);
    }
    std::optional<HtmlSurveyReport> page;
    if (!request.html.empty()) {
        page.emplace(request.html, request.sources);
    }
    const Survey survey = SurveyAll(files, options);
    if (report) {
        report->Write(survey);
    }
    if (page) {
        page->Write(survey);
    }
    if (schema || map) {
        const Draft draft = MakeDraft(survey);
        if (draft.types.empty()) {
            throw UsageError("there are no rows to draft a schema or a map for");
        }
        Write(schema, SchemaDraft(draft));
        Write(map, MapDraft(survey, draft));
    }
    PrintSurvey(survey, out);
}

}  // namespace tool
