#include "recorddb/attachments/attachment_folder.h"

#include <algorithm>
#include <fstream>
#include <system_error>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

namespace {

namespace fs = std::filesystem;

PaMessage Refuse(int id, const std::string& name) {
    return ErrorMessage(id, {{u"_value_", name}});
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

bool IsBelow(const fs::path& path, const fs::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end() && rest != path.end();
}

}  // namespace

PaMessage AttachmentFolder::Find(const std::string& name, fs::path& path) const {
    if (m_folder.empty()) {
        return Refuse(message_id::kAttachmentNoFolder, name);
    }
    // A line end in the name would break the text by which an attachment is told.
    if (name.empty() || name.find_first_of("\r\n") != std::string::npos) {
        return Refuse(message_id::kAttachmentBadName, name);
    }
    if (fs::path(name).is_absolute() || Climbs(name)) {
        return Refuse(message_id::kAttachmentOutside, name);
    }
    std::error_code error;
    const fs::path folder = fs::canonical(m_folder, error);
    if (!error) {
        path = fs::canonical(m_folder / name, error);
    }
    if (error) {
        return ErrorMessage(message_id::kAttachmentUnreadable,
                            {{u"_value_", name}, {u"_coreinfo_", error.message()}});
    }
    if (!IsBelow(path, folder)) {
        return Refuse(message_id::kAttachmentOutside, name);
    }
    // Before it is opened: opening a pipe would wait for its other end.
    if (!fs::is_regular_file(path, error)) {
        return Refuse(message_id::kAttachmentNotAFile, name);
    }
    if (!std::ifstream(path, std::ios::binary)) {
        return ErrorMessage(
            message_id::kAttachmentUnreadable,
            {{u"_value_", name}, {u"_coreinfo_", std::system_category().message(errno)}});
    }
    return {};
}

}  // namespace recorddb
