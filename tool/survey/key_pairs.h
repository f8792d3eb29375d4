#ifndef TOOL_SURVEY_KEY_PAIRS_H
#define TOOL_SURVEY_KEY_PAIRS_H

#include <string>
#include <string_view>

#include "tool/survey/source_survey.h"

namespace tool {

// Sets `source.keyPairs`: the pairs of addresses whose values together are others in each row.
// Reads the files once more, in constant memory. Of many addresses only those with the best names
// for a key are tried. Throws SourceError when a file cannot be read or is another one by now,
// std::system_error when a temporary file cannot be written.
void FindKeyPairs(SourceSurvey& source);

// The key that two values make, as the template of a draft puts them together.
std::string PairedKey(std::string_view first, std::string_view second);

}  // namespace tool

#endif
