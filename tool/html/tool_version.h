#ifndef TOOL_HTML_TOOL_VERSION_H
#define TOOL_HTML_TOOL_VERSION_H

namespace tool {

// The version of the tool, such as "1.2.0".
const char* ToolVersion();

}  // namespace tool

#endif
