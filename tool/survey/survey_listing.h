#ifndef TOOL_SURVEY_SURVEY_LISTING_H
#define TOOL_SURVEY_SURVEY_LISTING_H

#include <ostream>

#include "tool/survey/survey.h"

namespace tool {

// Shows a survey on a terminal: each source with its addresses, a line for each, and below it its
// frequent values and what else is worth knowing.
void PrintSurvey(const Survey& survey, std::ostream& out);

}  // namespace tool

#endif
