#ifndef TOOL_VERIFY_COMPARISON_ATTACHMENT_FILES_H
#define TOOL_VERIFY_COMPARISON_ATTACHMENT_FILES_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "recorddb/attachment_folder.h"

namespace tool {

// What a file of the attachments folder holds.
struct FileContent {
    std::int64_t size = 0;
    std::string sha256;   // empty when the file could not be read
    std::string problem;  // why not, for people
};

// The files that the attachments of sources name.
class AttachmentFiles {
  public:
    // Files of more than `maxSize` bytes are not read.
    AttachmentFiles(std::filesystem::path folder, std::int64_t maxSize)
        : m_folder(std::move(folder), maxSize) {}

    // Reads the file of that name, attached to that field, in constant memory. Names lead to
    // nothing outside of the folder.
    FileContent Read(const std::string& name, std::string_view field) const;

  private:
    recorddb::AttachmentFolder m_folder;
};

}  // namespace tool

#endif
