#ifndef RECORDDB_EDITING_REFERENCE_REFUSAL_H
#define RECORDDB_EDITING_REFERENCE_REFUSAL_H

#include <string_view>

#include "platform/messages/pamessage.h"
#include "recorddb/editing/key_search.h"
#include "recorddb/schema.h"

namespace recorddb {

// The message that says why `field` of `type` cannot refer to the record of type `target` that
// `key` means; for a match without a record.
PaMessage ReferenceRefusal(const schema::RecordType& type, const schema::Field& field,
                           const schema::RecordType& target, std::string_view key,
                           const KeyMatch& match, const KeySearchLimits& limits);

}  // namespace recorddb

#endif
