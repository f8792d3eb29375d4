#ifndef TOOL_SURVEY_DRAFT_REFERENCES_H
#define TOOL_SURVEY_DRAFT_REFERENCES_H

#include "tool/survey/draft_work.h"

namespace tool {

// Makes fields refer to records where all of their values are found there, makes record types of
// the values of lists, and says what else there is to know of each field.
void DraftReferences(DraftWork& work);

}  // namespace tool

#endif
