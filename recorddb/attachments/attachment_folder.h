#ifndef RECORDDB_ATTACHMENTS_ATTACHMENT_FOLDER_H
#define RECORDDB_ATTACHMENTS_ATTACHMENT_FOLDER_H

#include <filesystem>
#include <string>

#include "platform/messages/pamessage.h"

namespace recorddb {

// The folder below which the files of attachments are found. Names come out of packets, from
// elsewhere: nothing outside of the folder can be reached by them.
class AttachmentFolder {
  public:
    // An empty path: there is no folder, and every name is refused.
    explicit AttachmentFolder(std::filesystem::path folder) : m_folder(std::move(folder)) {}

    // Finds a file by its relative name, in UTF-8. Returns a message with id 0 and the file's path
    // without symbolic links, or the message that refuses the name: it is absolute or leaves the
    // folder (also through a link), or what it names is missing or no file that can be read.
    PaMessage Find(const std::string& name, std::filesystem::path& path) const;

  private:
    std::filesystem::path m_folder;
};

}  // namespace recorddb

#endif
