#ifndef TOOL_LOSSES_CHANGED_TEXT_H
#define TOOL_LOSSES_CHANGED_TEXT_H

#include <string>
#include <string_view>

// Says how what the importer reads differs from the text by the rules of XML. All texts are UTF-8.
namespace tool {

// True when the two texts differ in nothing but how their lines end.
bool SameButForLineEnds(std::string_view a, std::string_view b);

// What the importer has done to `written`, a value by the rules of XML, when it reads `read`
// instead.
std::string DescribeChange(std::string_view written, std::string_view read);

// `text` between double quotes and on one line, cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace tool

#endif
