#include "tool/html/own_path.h"

#include "tool/usage_error.h"

namespace tool {

const std::filesystem::path& OwnPath(const std::filesystem::path& html,
                                     const std::filesystem::path& report) {
    if (html.lexically_normal() == report.lexically_normal()) {
        throw UsageError("--report and --html both name " + html.string() +
                         "; give each a file of its own");
    }
    return html;
}

}  // namespace tool
