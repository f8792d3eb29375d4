#ifndef RECORDDB_FILES_ATTACHMENT_FOLDER_H
#define RECORDDB_FILES_ATTACHMENT_FOLDER_H

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "platform/messages/pamessage.h"
#include "recorddb/files/attachment_file.h"

namespace recorddb {

// The folder below which the files of attachments are found. Names come out of packets, from
// elsewhere: nothing outside of the folder can be reached by them.
class AttachmentFolder {
  public:
    // An empty path: there is no folder, and every name is refused. Files of more than maxSize
    // bytes are refused as well.
    AttachmentFolder(std::filesystem::path folder, std::int64_t maxSize)
        : m_folder(std::move(folder)), m_maxSize(maxSize) {}

    // Opens a file by its relative name, in UTF-8, for an attachment of the named field. Returns a
    // message with id 0 and the file, or the message that refuses the name: it is absolute or
    // leaves the folder (also through a link), or what it names is missing, too large or no file
    // that can be read.
    PaMessage Open(const std::string& name, std::string_view field, AttachmentFile& file) const;

  private:
    std::filesystem::path m_folder;
    std::int64_t m_maxSize;
};

}  // namespace recorddb

#endif
