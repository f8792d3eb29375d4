#include "recorddb/editing/reference_refusal.h"

#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

PaMessage ReferenceRefusal(const schema::RecordType& type, const schema::Field& field,
                           const schema::RecordType& target, std::string_view key,
                           const KeyMatch& match, const KeySearchLimits& limits) {
    if (match.undecided) {
        return FieldMessage(message_id::kReferenceUndecided, type, field,
                            {{u"_value_", key},
                             {u"_refentitydef_", target.name},
                             {u"_limit_", std::to_string(limits.maxTries)}});
    }
    return FieldMessage(
        match.several ? message_id::kReferenceUnclear : message_id::kReferenceUnknown, type, field,
        {{u"_value_", key}, {u"_refentitydef_", target.name}});
}

}  // namespace recorddb
