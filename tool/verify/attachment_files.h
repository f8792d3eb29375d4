#ifndef TOOL_VERIFY_ATTACHMENT_FILES_H
#define TOOL_VERIFY_ATTACHMENT_FILES_H

#include <cstdint>
#include <filesystem>
#include <string>

#include "recorddb/attachments/attachment_folder.h"

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
    explicit AttachmentFiles(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    // Reads the file of that name, in constant memory. Names lead to nothing outside of the folder.
    FileContent Read(const std::string& name) const;

  private:
    recorddb::AttachmentFolder m_folder;
};

}  // namespace tool

#endif
