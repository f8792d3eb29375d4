#ifndef TOOL_LOAD_RECORDS_SOURCE_ID_H
#define TOOL_LOAD_RECORDS_SOURCE_ID_H

#include <string>

#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// The original id of a record as its source has it, restored where that is guarded, also of one
// with a defect; empty when it has none, or it cannot be made out.
std::string SourceIdOf(const SourceRecord& record, const ImportConfiguration& configuration);

}  // namespace tool

#endif
