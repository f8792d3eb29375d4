#ifndef RECORDDB_ATTACHMENT_FOLDER_H
#define RECORDDB_ATTACHMENT_FOLDER_H

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>

#include "platform/messages/pamessage.h"
#include "recorddb/export.h"

namespace recorddb {

class FileDescriptor;

// A file that is to become an attachment: a regular file that is open for reading. It stays the
// same file even when its name is given to another one.
class RECORDDB_API AttachmentFile {
  public:
    // The longest piece that is read at once.
    static constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

    AttachmentFile() = default;

    // A file of that many bytes, called `name` in messages.
    AttachmentFile(std::shared_ptr<const FileDescriptor> descriptor, std::string name,
                   std::int64_t size)
        : m_descriptor(std::move(descriptor)), m_name(std::move(name)), m_size(size) {}

    // In bytes, when it was opened.
    std::int64_t Size() const { return m_size; }

    // Hands `take` the content from its beginning, in pieces of kPieceSize, of which only the last
    // may be shorter. May be called again. Returns a message with id 0; or the one that says that
    // the file cannot be read, or is longer or shorter than it was when it was opened. No more than
    // Size() bytes are handed over.
    PaMessage Read(const std::function<void(std::span<const std::byte>)>& take) const;

    // The message that says that the content has changed.
    PaMessage Changed() const;

  private:
    std::shared_ptr<const FileDescriptor> m_descriptor;
    std::string m_name;
    std::int64_t m_size = 0;
};

// The folder in which the files of attachments are found. Their names come from packets and are not
// trusted: no name reaches anything outside of the folder.
class RECORDDB_API AttachmentFolder {
  public:
    // An empty path means that there is no folder: every name is refused. Files of more than
    // `maxSize` bytes are refused as well.
    AttachmentFolder(std::filesystem::path folder, std::int64_t maxSize)
        : m_folder(std::move(folder)), m_maxSize(maxSize) {}

    // Opens a file by its relative name, in UTF-8, for an attachment of the named field. Returns a
    // message with id 0 and the file, or the message that refuses the name: it is absolute or
    // leaves the folder (also through a link), or what it names is missing, too large or not a file
    // that can be read.
    PaMessage Open(const std::string& name, std::string_view field, AttachmentFile& file) const;

  private:
    std::filesystem::path m_folder;
    std::int64_t m_maxSize;
};

}  // namespace recorddb

#endif
