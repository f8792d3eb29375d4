#include "recorddb/attachment_folder.h"

#include <sys/stat.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/messages/message_ids.h"
#include "recorddb/files/open_beneath.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

namespace fs = std::filesystem;

PaMessage Refuse(int id, const std::string& name) {
    return ErrorMessage(id, {{u"_value_", name}});
}

// A line end in the name would break the text that describes an attachment, and the system takes a
// name to end at a NUL.
bool IsFileName(const std::string& name) {
    return !name.empty() && name.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

// True when the name climbs above where it started, whether or not it comes back.
bool Climbs(const fs::path& name) {
    int depth = 0;
    for (const fs::path& part : name) {
        depth += part == ".." ? -1 : (part == "." || part.empty() ? 0 : 1);
        if (depth < 0) {
            return true;
        }
    }
    return false;
}

PaMessage CannotOpen(const std::string& name, int error) {
    switch (error) {
        case EXDEV:
            return Refuse(message_id::kAttachmentOutside, name);
        case ENXIO:  // a socket, or a device without a driver
        case ENODEV:
            return Refuse(message_id::kAttachmentNotAFile, name);
        default:
            return ErrorMessage(
                message_id::kAttachmentUnreadable,
                {{u"_value_", name}, {u"_coreinfo_", std::system_category().message(error)}});
    }
}

}  // namespace

PaMessage AttachmentFolder::Open(const std::string& name, std::string_view field,
                                 AttachmentFile& file) const {
    if (m_folder.empty()) {
        return Refuse(message_id::kAttachmentNoFolder, name);
    }
    if (!IsFileName(name)) {
        return Refuse(message_id::kAttachmentBadName, name);
    }
    if (fs::path(name).is_absolute() || Climbs(name)) {
        return Refuse(message_id::kAttachmentOutside, name);
    }
    FileDescriptor descriptor = OpenBeneath(m_folder, name);
    struct stat status = {};
    if (!descriptor.IsOpen() || fstat(descriptor.Number(), &status) != 0) {
        return CannotOpen(name, errno);
    }
    if (!S_ISREG(status.st_mode)) {
        return Refuse(message_id::kAttachmentNotAFile, name);
    }
    const std::int64_t size = status.st_size;
    if (size > m_maxSize) {
        return ErrorMessage(message_id::kAttachmentTooLarge,
                            {{u"_value_", name},
                             {u"_field_", field},
                             {u"_length_", std::to_string(size)},
                             {u"_limit_", std::to_string(m_maxSize)}});
    }
    file =
        AttachmentFile(std::make_shared<const FileDescriptor>(std::move(descriptor)), name, size);
    return {};
}

}  // namespace recorddb
