#ifndef TOOL_TEXT_VALUE_PAIR_H
#define TOOL_TEXT_VALUE_PAIR_H

#include <string>
#include <string_view>

namespace tool {

// Two values that differ, made fit to stand in one line of a terminal.
struct ShownPair {
    std::string source;
    std::string database;
};

// Long values are cut to what stands around the first place at which they differ, with "..." for
// what is left out; the rest is written as VisibleText does.
ShownPair ShowPair(std::string_view source, std::string_view database);

}  // namespace tool

#endif
