#ifndef TOOL_LOSSES_VALUE_LOSSES_H
#define TOOL_LOSSES_VALUE_LOSSES_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

// What the importer leaves out of single values. All texts are UTF-8.
namespace tool {

// A history line that the importer drops whole.
struct LongLine {
    std::size_t line = 0;  // in the value, from 1
    std::size_t columns = 0;
    std::string_view id;  // the entry's id in the source, its first column
};

// Goes through a history value; hands over the lines that are dropped and returns the number of
// the others, each of which is an entry.
std::size_t ReadHistoryValue(std::string_view value,
                             const std::function<void(const LongLine&)>& take);

// The number of lines behind the last whole attachment in an attachments value, 0 to 3.
std::size_t LinesLeftOver(std::string_view value);

// True when the two texts differ in nothing but how their lines end.
bool SameButForLineEnds(std::string_view a, std::string_view b);

// What the importer has made of WRITTEN, a value as XML says, when it reads READ instead.
std::string DescribeChange(std::string_view written, std::string_view read);

// TEXT between double quotes and on one line, cut when it is long.
std::string Quoted(std::string_view text);

}  // namespace tool

#endif
