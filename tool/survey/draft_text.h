#ifndef TOOL_SURVEY_DRAFT_TEXT_H
#define TOOL_SURVEY_DRAFT_TEXT_H

#include <string>

#include "tool/survey/draft.h"

namespace tool {

// The drafts as files: YAML with comments. Those that begin with "decide:" say what a person has to
// decide. Each is read by what reads schema files and map files.
std::string SchemaDraft(const Draft& draft);
std::string MapDraft(const Survey& survey, const Draft& draft);

}  // namespace tool

#endif
