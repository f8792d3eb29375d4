#ifndef RECORDDB_EDITING_RECORD_WRITER_H
#define RECORDDB_EDITING_RECORD_WRITER_H

#include "platform/messages/pamessage.h"
#include "recorddb/editing/edited_record.h"
#include "recorddb/session/session_parts.h"

namespace recorddb {

// Writes the changes of a record, all or nothing. Returns a message with id 0, after which the
// record counts as loaded and unchanged, or the message that says why it was refused, after which
// it still holds its changes. Throws sql::Error when the database fails.
PaMessage WriteRecord(SessionParts& parts, EditedRecord& record);

}  // namespace recorddb

#endif
