#ifndef TOOL_GUARDED_BLANK_WORD_H
#define TOOL_GUARDED_BLANK_WORD_H

#include <string_view>

namespace tool {

// True for the word "BLANK" in UTF-8, whatever its letters' cases are: the importer takes it for
// the empty value.
bool IsBlankWord(std::string_view value);

}  // namespace tool

#endif
