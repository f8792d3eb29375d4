#include "tool/html/attachment_words.h"

#include "recorddb/session_options.h"

namespace tool {

void AddAttachmentWords(const std::filesystem::path& folder, std::int64_t maxSize,
                        std::vector<std::string>& command) {
    if (folder.empty()) {
        return;
    }
    command.insert(command.end(), {"--attachments", folder.string()});
    if (maxSize != recorddb::kDefaultMaxAttachmentSize) {
        command.insert(command.end(), {"--max-attachment-size", std::to_string(maxSize)});
    }
}

}  // namespace tool
