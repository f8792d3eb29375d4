#ifndef TOOL_SURVEY_DRAFT_ORDER_H
#define TOOL_SURVEY_DRAFT_ORDER_H

#include "tool/survey/draft.h"

namespace tool {

// Sets the order of the types: what is referred to comes first. Where types refer to each other, or
// to themselves, their references are set when all records are there.
void SortTypes(Draft& draft);

}  // namespace tool

#endif
