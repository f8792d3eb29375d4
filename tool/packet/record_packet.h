#ifndef TOOL_PACKET_RECORD_PACKET_H
#define TOOL_PACKET_RECORD_PACKET_H

#include <string>
#include <string_view>
#include <vector>

#include "tool/packet/markup_sections.h"

namespace tool {

// Puts into `packet` the packet that hands the importer one record and no other: the declaration
// and the text `record`, which means the same to an XML reader, but in which
// - the bytes "<record>" occur only once, since the importer looks for records by these bytes alone
//   and would find one inside a comment, too; `disguised` lists the sections of `record` that hold
//   them;
// - no element "configuration" opens before the record, as far as the importer is concerned, since
//   it would take a record whose first field element has that name as a new configuration.
void BuildRecordPacket(std::string_view record, const std::vector<Section>& disguised,
                       std::string& packet);

}  // namespace tool

#endif
