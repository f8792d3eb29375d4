#ifndef TOOL_PACKET_FIELD_SEARCH_H
#define TOOL_PACKET_FIELD_SEARCH_H

#include <optional>
#include <string>
#include <string_view>

namespace tool {

// The value of the field called `name` in the text of a record, as the importer would read it:
// field names are compared without regard to case, of several fields of that name the last one
// counts, and the eight escapes of the packet format are decoded. Works on a record that is not
// well-formed as well, as far as it can be made out, so that a rejected record can be named.
// Returns nothing when there is no such field, or `name` is empty.
std::optional<std::string> FindFieldValue(std::string_view record, std::string_view name);

}  // namespace tool

#endif
