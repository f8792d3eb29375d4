#include "recorddb/editing/attachment_changes.h"

#include <fmt/format.h>

#include <algorithm>

namespace recorddb {

void AttachmentChanges::Clear() {
    added.clear();
    removed.clear();
}

std::vector<Attachment> AttachmentChanges::AppliedTo(std::vector<Attachment> stored) const {
    std::erase_if(stored, [this](const Attachment& attachment) {
        return std::any_of(removed.begin(), removed.end(), [&attachment](const Attachment& gone) {
            return gone.dbid == attachment.dbid;
        });
    });
    for (const NewAttachment& addition : added) {
        stored.push_back(addition.attachment);
    }
    return stored;
}

std::string AttachmentText(const Attachment& attachment) {
    return fmt::format("{}\n{}\n{}\n{}", attachment.dbid, attachment.fileName, attachment.fileSize,
                       attachment.description);
}

}  // namespace recorddb
