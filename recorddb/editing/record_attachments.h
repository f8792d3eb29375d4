#ifndef RECORDDB_EDITING_RECORD_ATTACHMENTS_H
#define RECORDDB_EDITING_RECORD_ATTACHMENTS_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/messages/pamessage.h"
#include "recorddb/attachment_folder.h"
#include "recorddb/editing/attachment_changes.h"
#include "recorddb/store/attachment_table.h"
#include "recorddb/store/batch/write_batch.h"
#include "recorddb/store/content_store.h"

namespace recorddb {

// The attachments of records: their rows, the files that they come from, and their contents.
// Operations throw sql::Error.
class RecordAttachments {
  public:
    // The batch outlives the object.
    RecordAttachments(WriteBatch& batch, AttachmentFolder folder, ContentStore::Keeping keeping)
        : m_batch(batch),
          m_table(batch),
          m_folder(std::move(folder)),
          m_contents(batch.GetConnection(), keeping) {}

    // The attachments that are stored for a record, in the order in which they were added.
    std::vector<Attachment> Load(std::int64_t recordType, std::int64_t record) {
        m_batch.NoteRead({recordType, record});
        const auto* const answer = m_batch.Answers().FindAttachments({recordType, record});
        return answer != nullptr ? *answer : m_table.Load(recordType, record);
    }

    // Opens a file of the folder; see AttachmentFolder::Open.
    PaMessage Open(const std::string& name, std::string_view field, AttachmentFile& file) const {
        return m_folder.Open(name, field, file);
    }

    // Writes the changes of a record, with the files of the folder, removing content that no
    // attachment has any longer. Returns a message with id 0, or the one that says why a file could
    // not be read, after which the caller undoes what was written.
    PaMessage Write(std::int64_t recordType, std::int64_t record, const AttachmentChanges& changes);

  private:
    WriteBatch& m_batch;
    AttachmentTable m_table;
    AttachmentFolder m_folder;
    ContentStore m_contents;
};

}  // namespace recorddb

#endif
