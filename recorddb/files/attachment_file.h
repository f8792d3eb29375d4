#ifndef RECORDDB_FILES_ATTACHMENT_FILE_H
#define RECORDDB_FILES_ATTACHMENT_FILE_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <utility>

#include "platform/messages/pamessage.h"
#include "recorddb/files/file_descriptor.h"

namespace recorddb {

// A file that is to become an attachment: a regular file that is open for reading. It stays the
// same file whatever becomes of its name.
class AttachmentFile {
  public:
    // The longest piece that is read at once.
    static constexpr std::size_t pieceSize = std::size_t{256} * 1024;

    AttachmentFile() = default;

    // A file of that many bytes, called `name` in messages.
    AttachmentFile(FileDescriptor descriptor, std::string name, std::int64_t size)
        : m_descriptor(std::move(descriptor)), m_name(std::move(name)), m_size(size) {}

    // In bytes, when it was opened.
    std::int64_t Size() const { return m_size; }

    // Hands the content over from its beginning, in pieces that are all of pieceSize but for the
    // last one. May be called again. Returns a message with id 0; or the one that says that the
    // file cannot be read, or is longer or shorter than it was when it was opened. No more than
    // Size() bytes are handed over.
    PaMessage Read(const std::function<void(std::span<const std::byte>)>& take) const;

    // The message that the content is another one than it was.
    PaMessage Changed() const;

  private:
    FileDescriptor m_descriptor;
    std::string m_name;
    std::int64_t m_size = 0;
};

}  // namespace recorddb

#endif
