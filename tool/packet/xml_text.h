#ifndef TOOL_PACKET_XML_TEXT_H
#define TOOL_PACKET_XML_TEXT_H

#include <string>
#include <string_view>

namespace tool {

// White space in markup, as XML defines it.
inline constexpr std::string_view kXmlBlanks = " \t\r\n";

// `text` as it stands between the double quotes of an attribute, white space kept by references.
std::string EscapedAttribute(std::string_view text);

}  // namespace tool

#endif
