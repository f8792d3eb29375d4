#ifndef TOOL_HTML_OWN_PATH_H
#define TOOL_HTML_OWN_PATH_H

#include <filesystem>

namespace tool {

// Returns HTML, the path of a page. Throws UsageError when REPORT, that of the JSON report, is the
// same: one would take the place of the other.
const std::filesystem::path& OwnPath(const std::filesystem::path& html,
                                     const std::filesystem::path& report);

}  // namespace tool

#endif
