#include "tool/source_checks.h"

#include "tool/source_error.h"
#include "tool/usage_error.h"

namespace tool {

void RequireFolder(const std::filesystem::path& attachments) {
    std::error_code ignored;
    if (!attachments.empty() && !std::filesystem::is_directory(attachments, ignored)) {
        throw UsageError("the attachments folder " + attachments.string() +
                         " does not exist; name the folder that the file names in the packets "
                         "start from");
    }
}

void RequireConfiguration(const ImportConfiguration& configuration, const std::string& name) {
    if (!configuration.Received()) {
        throw SourceError(SourceProblem::Refused, name,
                          name +
                              ": no configuration packet comes before these records; "
                              "name it before them on the command line");
    }
}

void RequireAttachments(const std::filesystem::path& attachments, const std::string& name) {
    if (attachments.empty()) {
        throw SourceError(SourceProblem::Refused, name,
                          name +
                              ": attachments are imported only from a folder that "
                              "--attachments names");
    }
}

}  // namespace tool
