#ifndef RECORDDB_EDITING_EDITED_RECORD_H
#define RECORDDB_EDITING_EDITED_RECORD_H

#include <cstdint>
#include <optional>
#include <vector>

#include "recorddb/editing/attachment_changes.h"
#include "recorddb/editing/entity_def.h"
#include "recorddb/store/batch/record_buffer.h"

namespace recorddb {

// A record that is open for writing, as it stands between the core's calls.
struct EditedRecord {
    explicit EditedRecord(EntityDef& entityDef)
        : def(entityDef),
          buffer(entityDef.Type().fields.size()),
          listsLoaded(entityDef.Type().fields.size()) {}

    bool IsNew() const { return version == 0; }
    const schema::RecordType& Type() const { return def.Type(); }

    EntityDef& def;
    std::int64_t dbid = 0;     // of a new record: 0 until it is asked for or written
    std::int64_t version = 0;  // that the changes are based on; 0: the record is new
    RecordBuffer buffer;
    // Whether the buffer holds what the database has: the columns, and each list by its field.
    // Nothing is changed before it is loaded. Not used for a new record.
    bool columnsLoaded = false;
    std::vector<bool> listsLoaded;
    AttachmentChanges attachments;
    // The record that this one was marked as a duplicate of, and whether the link is there already.
    std::optional<std::int64_t> original;
    bool linked = false;
    // WriteBatch::UndoCount when it was opened.
    std::uint64_t undoCount = 0;
};

}  // namespace recorddb

#endif
