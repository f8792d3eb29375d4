#include <algorithm>
#include <cerrno>
#include <system_error>
#include <vector>

#include "platform/messages/message_ids.h"
#include "recorddb/attachment_folder.h"
#include "recorddb/files/file_descriptor.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

// Fills the buffer from `offset` on, as far as the file goes. Returns the number of bytes, or -1
// with the reason in errno.
std::int64_t ReadAt(int descriptor, std::span<std::byte> buffer, std::int64_t offset) {
    std::size_t done = 0;
    while (done < buffer.size()) {
        const std::span<std::byte> rest = buffer.subspan(done);
        const ssize_t got = pread(descriptor, rest.data(), rest.size(),
                                  static_cast<off_t>(offset + static_cast<std::int64_t>(done)));
        if (got == 0) {
            break;
        }
        if (got > 0) {
            done += static_cast<std::size_t>(got);
        } else if (errno != EINTR) {
            return -1;
        }
    }
    return static_cast<std::int64_t>(done);
}

}  // namespace

PaMessage AttachmentFile::Read(const std::function<void(std::span<const std::byte>)>& take) const {
    // Room for one byte more than there should be, which shows that the file has grown.
    std::vector<std::byte> buffer(
        std::min(kPieceSize, static_cast<std::size_t>(m_size) + std::size_t{1}));
    std::int64_t offset = 0;
    while (true) {
        const std::int64_t got = ReadAt(m_descriptor->Number(), buffer, offset);
        if (got < 0) {
            return ErrorMessage(
                message_id::kAttachmentUnreadable,
                {{u"_value_", m_name}, {u"_coreinfo_", std::system_category().message(errno)}});
        }
        const bool isEnd = got < static_cast<std::int64_t>(buffer.size());
        if (got > m_size - offset || (isEnd && got < m_size - offset)) {
            return Changed();
        }
        if (got > 0) {
            take(std::span(buffer).first(static_cast<std::size_t>(got)));
        }
        if (isEnd) {
            return {};
        }
        offset += got;
    }
}

PaMessage AttachmentFile::Changed() const {
    return ErrorMessage(message_id::kAttachmentChanged, {{u"_value_", m_name}});
}

}  // namespace recorddb
