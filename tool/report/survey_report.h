#ifndef TOOL_REPORT_SURVEY_REPORT_H
#define TOOL_REPORT_SURVEY_REPORT_H

#include <filesystem>

#include "tool/io/replacing_file.h"
#include "tool/survey/survey.h"

namespace tool {

// Writes a survey as JSON: an object of "sources", a list of objects, and "not_read", a list of
// names. A source has "files", "format" and how it is read, "rows", "rejected" (rows that cannot be
// used, of which "bad_rows" holds the first), "keys" (lists of one or two addresses that rows can
// be known by), "remarks", and "addresses": what was counted at each, its most frequent values,
// date formats and remarks. Texts stand there as they are in the files, as far as JSON allows.
class SurveyReport {
  public:
    // A place that cannot be written shows before the survey. Throws std::system_error.
    explicit SurveyReport(const std::filesystem::path& path) : m_file(path) {}

    // To be called once. Throws std::system_error.
    void Write(const Survey& survey);

  private:
    ReplacingFile m_file;
};

}  // namespace tool

#endif
