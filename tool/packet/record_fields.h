#ifndef TOOL_PACKET_RECORD_FIELDS_H
#define TOOL_PACKET_RECORD_FIELDS_H

#include <optional>
#include <string>
#include <string_view>

namespace tool {

// The value of the field called NAME in the text of a record, as the importer would read it: field
// names are compared without regard to case, of several fields of that name the last one counts,
// and the eight escapes of the packet format are decoded. Works on a record that is not well-formed
// as well, as far as it can be made out, so that a rejected record can be named. Returns nothing
// when there is no such field, or NAME is empty.
std::optional<std::string> FindFieldValue(std::string_view record, std::string_view name);

// True when the importer takes two field names for the same: without regard to case, which is
// folded by Unicode. An empty NAME is no field's.
bool SameFieldName(std::string_view field, std::string_view name);

// TEXT with the eight escapes of the packet format replaced one after the other, "&amp;" first, so
// that "&amp;lt;" becomes "<".
std::string DecodePacketEscapes(std::string_view text);

// Whether one of these escapes stands at the beginning of TEXT.
bool StartsWithPacketEscape(std::string_view text);

}  // namespace tool

#endif
