#ifndef TOOL_COMMANDS_VERSION_TEXT_H
#define TOOL_COMMANDS_VERSION_TEXT_H

#include <string>

namespace tool {

// What `ztimport --version` prints, but for the last line end: the program's version on a line of
// its own, then those of the database format and of the libraries that are loaded.
std::string VersionText();

}  // namespace tool

#endif
