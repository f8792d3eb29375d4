#include "recorddb/editing/record_attachments.h"

namespace recorddb {

PaMessage RecordAttachments::Write(std::int64_t recordType, std::int64_t record,
                                   const AttachmentChanges& changes) {
    for (const Attachment& attachment : changes.removed) {
        m_table.Remove(record, attachment.dbid);
    }
    for (const NewAttachment& addition : changes.added) {
        Attachment attachment = addition.attachment;
        AttachmentFile file;
        Content content;
        PaMessage problem = Open(addition.name, attachment.field, file);
        if (problem.ID() == 0) {
            problem = m_contents.Store(file, content);
        }
        if (problem.ID() != 0) {
            return problem;
        }
        attachment.fileSize = content.size;
        attachment.sha256 = content.sha256;
        m_table.Insert(recordType, record, attachment);
    }
    // Last, so that content which is removed and added again need not be written again.
    for (const Attachment& attachment : changes.removed) {
        m_contents.RemoveUnused(attachment.sha256);
    }
    return {};
}

}  // namespace recorddb
