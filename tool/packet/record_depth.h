#ifndef TOOL_PACKET_RECORD_DEPTH_H
#define TOOL_PACKET_RECORD_DEPTH_H

#include <cstddef>
#include <string_view>

namespace tool {

// Whether the elements of `record`, itself among them, are nested deeper than `depth`. Looks at
// tags only, so that it can say so of any text, in constant memory.
bool IsNestedDeeperThan(std::size_t depth, std::string_view record);

}  // namespace tool

#endif
