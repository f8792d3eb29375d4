#ifndef TOOL_HTML_HTML_SURVEY_REPORT_H
#define TOOL_HTML_HTML_SURVEY_REPORT_H

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "tool/io/replacing_file.h"
#include "tool/survey/survey.h"

namespace tool {

// The page about a survey, and the file that it stands in. It appears at its path complete or not
// at all, in place of an earlier one. Constructor and Write throw std::system_error that names the
// file when it cannot be written; the constructor sees that before the survey.
class HtmlSurveyReport {
  public:
    // `sources` are those of the command line.
    HtmlSurveyReport(const std::filesystem::path& path, std::vector<std::string> sources);

    // To be called once.
    void Write(const Survey& survey);

  private:
    ReplacingFile m_file;
    std::vector<std::string> m_sources;
    std::chrono::system_clock::time_point m_start;
};

}  // namespace tool

#endif
