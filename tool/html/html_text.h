#ifndef TOOL_HTML_HTML_TEXT_H
#define TOOL_HTML_HTML_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace tool {

// Stands for what has been left out of a text.
inline constexpr std::string_view kEllipsis = "\xE2\x80\xA6";

// `text` as it may stand in an HTML element or between the double quotes of an attribute. What is
// not UTF-8, and control characters that HTML does not know, become U+FFFD; what would turn the
// order of the text around it is written as VisibleText does.
std::string HtmlText(std::string_view text);

// `text`, or what of its beginning fits into `limit` bytes followed by an ellipsis; characters are
// left whole.
std::string Clipped(std::string_view text, std::size_t limit);

// `word` as it can be pasted into a POSIX shell, in quotes where it needs them. Plain text.
std::string ShellWord(std::string_view word);

}  // namespace tool

#endif
