#ifndef TOOL_SURVEY_DRAFT_KEYS_H
#define TOOL_SURVEY_DRAFT_KEYS_H

#include <cstddef>
#include <optional>

#include "tool/survey/source_survey.h"

namespace tool {

// The address, by position, whose values tell the rows of a source apart best, be it that some
// repeat. None when no address has one value a row.
std::optional<std::size_t> FindRowKey(const SourceSurvey& source);

// The address between that of an element of a list, and `end`, behind the last one below it, which
// the elements, each an object, can be known by.
std::optional<std::size_t> FindItemKey(const SourceSurvey& source, std::size_t element,
                                       std::size_t end);

}  // namespace tool

#endif
