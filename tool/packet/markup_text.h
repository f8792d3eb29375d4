#ifndef TOOL_PACKET_MARKUP_TEXT_H
#define TOOL_PACKET_MARKUP_TEXT_H

#include <cstddef>
#include <string_view>

// What XML markup is made of, for code that looks at a text without a parser.

namespace tool {

// What a search in a text returns when it finds nothing.
inline constexpr std::size_t kNotFound = std::string_view::npos;

inline constexpr std::string_view kCDataOpening = "<![CDATA[";

// True for the white space that XML allows between and in tags.
constexpr bool IsXmlBlank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// True when a name may begin with the byte `c` of a UTF-8 text.
constexpr bool StartsName(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' || c == ':' ||
           static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace tool

#endif
