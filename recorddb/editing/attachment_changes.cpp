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

PaMessage WriteAttachments(AttachmentTable& table, const AttachmentFolder& folder,
                           ContentStore& contents, std::int64_t recordType, std::int64_t record,
                           const AttachmentChanges& changes) {
    for (const Attachment& attachment : changes.removed) {
        table.Remove(attachment.dbid);
    }
    for (const NewAttachment& addition : changes.added) {
        Attachment attachment = addition.attachment;
        AttachmentFile file;
        Content content;
        PaMessage problem = folder.Open(addition.name, attachment.field, file);
        if (problem.ID() == 0) {
            problem = contents.Store(file, content);
        }
        if (problem.ID() != 0) {
            return problem;
        }
        attachment.fileSize = content.size;
        attachment.sha256 = content.sha256;
        table.Insert(recordType, record, attachment);
    }
    // Last, so that content which is removed and added again need not be written again.
    for (const Attachment& attachment : changes.removed) {
        contents.RemoveUnused(attachment.sha256);
    }
    return {};
}

std::string AttachmentText(const Attachment& attachment) {
    return fmt::format("{}\n{}\n{}\n{}", attachment.dbid, attachment.fileName, attachment.fileSize,
                       attachment.description);
}

}  // namespace recorddb
