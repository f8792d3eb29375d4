#ifndef TOOL_HTML_SHELL_WORD_H
#define TOOL_HTML_SHELL_WORD_H

#include <string>
#include <string_view>

namespace tool {

// WORD as it can be pasted into a POSIX shell, in quotes where it needs them.
std::string ShellWord(std::string_view word);

}  // namespace tool

#endif
