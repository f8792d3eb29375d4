#ifndef TOOL_SURVEY_DRAFT_RECORDS_H
#define TOOL_SURVEY_DRAFT_RECORDS_H

#include "tool/survey/draft_work.h"

namespace tool {

// Makes a record type of the rows of each source, and one of each list of objects in them.
void DraftRecords(DraftWork& work);

}  // namespace tool

#endif
