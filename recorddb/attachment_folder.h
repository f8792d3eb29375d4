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
// same file whatever becomes of its name.
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

    // Hands the content over from its beginning, in pieces that are all of kPieceSize but for the
    // last one. May be called again. Returns a message with id 0; or the one that says that the
    // file cannot be read, or is longer or shorter than it was when it was opened. No more than
    // Size() bytes are handed over.
    PaMessage Read(const std::function<void(std::span<const std::byte>)>& take) const;

    // The message that the content is another one than it was.
    PaMessage Changed() const;

  private:
    std::shared_ptr<const FileDescriptor> m_descriptor;
    std::string m_name;
    std::int64_t m_size = 0;
};

// The folder below which the files of attachments are found. Names come out of packets, from
// elsewhere: nothing outside of the folder can be reached by them.
class RECORDDB_API AttachmentFolder {
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
