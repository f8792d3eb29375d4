#ifndef TOOL_TEXT_VISIBLE_TEXT_H
#define TOOL_TEXT_VISIBLE_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>

namespace tool {

// `text`, which may come from anywhere, as it may stand in one line of a terminal: nothing in it
// can move the cursor, change colours, or turn the order of what is read around. Control characters
// (C0, C1), separators of lines and paragraphs, bidirectional controls and noncharacters are
// written as in C: "\n", "\x1b", "\u202e". So are bytes that are not UTF-8: "\xff". The rest stays
// as it is.
std::string VisibleText(std::string_view text);

// The same for a text whose line feeds are to stay. What follows one is indented, so that a line
// from outside cannot be taken for a line of the program.
std::string VisibleLines(std::string_view text);

// `text` with the same characters written as `escape` says, for other notations: it is given the
// character, or a negative number for bytes that are not UTF-8, and its bytes.
std::string Escaped(std::string_view text,
                    std::string (*escape)(std::int32_t character, std::string_view bytes));

}  // namespace tool

#endif
