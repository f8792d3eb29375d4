#ifndef TOOL_HTML_ATTACHMENT_WORDS_H
#define TOOL_HTML_ATTACHMENT_WORDS_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tool {

// Adds the options for attachments to the words of a command that is to be run as this one was:
// their folder, if there is one, and the largest size unless it is the default.
void AddAttachmentWords(const std::filesystem::path& folder, std::int64_t maxSize,
                        std::vector<std::string>& command);

}  // namespace tool

#endif
