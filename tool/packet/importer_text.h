#ifndef TOOL_PACKET_IMPORTER_TEXT_H
#define TOOL_PACKET_IMPORTER_TEXT_H

#include <string>
#include <string_view>

// Texts as the importer takes them: how it compares, trims and decodes. All texts are UTF-8.
namespace tool {

// The order of two texts without regard to case, which is folded by Unicode: below, equal to or
// above 0. The importer compares names of fields like this.
int CompareNoCase(std::string_view a, std::string_view b);
bool EqualNoCase(std::string_view a, std::string_view b);

// The part of `text` without white space, by Unicode's definition, at its left end, its right end
// or both. The importer trims references like this.
std::string_view TrimmedLeft(std::string_view text);
std::string_view TrimmedRight(std::string_view text);
std::string_view Trimmed(std::string_view text);

// `text` with the eight escapes of the packet format replaced by the importer's own parser: "&amp;"
// before the others, so that "&amp;lt;" becomes "<".
std::string DecodePacketEscapes(std::string_view text);

}  // namespace tool

#endif
