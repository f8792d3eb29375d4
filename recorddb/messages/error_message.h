#ifndef RECORDDB_MESSAGES_ERROR_MESSAGE_H
#define RECORDDB_MESSAGES_ERROR_MESSAGE_H

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include "platform/messages/pamessage.h"
#include "recorddb/schema.h"

namespace recorddb {

// Name and value (UTF-8) of each parameter of a message.
using MessageParameters = std::initializer_list<std::pair<const char16_t*, std::string_view>>;

// A message of the catalogue as an error. Values that are too long for a message are cut.
PaMessage ErrorMessage(int id, MessageParameters parameters);

// The same with the parameters "_datatype_" and "_field_" set to a field of a record type.
PaMessage FieldMessage(int id, const schema::RecordType& type, const schema::Field& field,
                       MessageParameters parameters);

// Throws a message as a PaMsgException*.
[[noreturn]] void ThrowMessage(PaMessage message);

}  // namespace recorddb

#endif
