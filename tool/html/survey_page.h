#ifndef TOOL_HTML_SURVEY_PAGE_H
#define TOOL_HTML_SURVEY_PAGE_H

#include <string>

#include "tool/html/page_parts.h"
#include "tool/survey/survey.h"

namespace tool {

// The page about a survey, a whole HTML document. Of `facts`, the database is empty.
std::string SurveyPage(const Survey& survey, const PageFacts& facts);

}  // namespace tool

#endif
