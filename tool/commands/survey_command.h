#ifndef TOOL_COMMANDS_SURVEY_COMMAND_H
#define TOOL_COMMANDS_SURVEY_COMMAND_H

#include <ostream>
#include <string>
#include <vector>

namespace tool {

// What `ztimport survey` was asked for. Empty texts stand for what was not named.
struct SurveyRequest {
    std::vector<std::string> sources;
    std::string format;
    std::string separator;
    std::string encoding;
    std::string report;
    std::string html;
    std::string writeSchema;
    std::string writeMap;
};

// Looks at files of which neither map nor schema is known, shows what is in them, and drafts both.
// Throws what main turns into an error.
void RunSurvey(const SurveyRequest& request, std::ostream& out);

}  // namespace tool

#endif
