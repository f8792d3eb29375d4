#ifndef RECORDDB_EDITING_RECORD_CHECKS_H
#define RECORDDB_EDITING_RECORD_CHECKS_H

#include "platform/messages/pamessage.h"
#include "recorddb/editing/edited_record.h"
#include "recorddb/session/session_parts.h"

namespace recorddb {

// Judges a record as a whole, which includes other records: required fields that are empty, values
// that must be unique and are not. What is wrong with a value in itself was refused when it was
// given. Each returns the message of the first fault, or one with id 0. Throw sql::Error.
PaMessage CheckRecord(SessionParts& parts, const EditedRecord& record);
PaMessage CheckUnique(SessionParts& parts, const EditedRecord& record);

// Finds the reference that made the engine refuse the record: one to a record that is gone.
PaMessage CheckReferences(SessionParts& parts, const EditedRecord& record);

}  // namespace recorddb

#endif
