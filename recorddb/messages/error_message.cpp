#include "recorddb/messages/error_message.h"

#include "platform/foundation/utf.h"
#include "platform/messages/pamsgexception.h"

namespace recorddb {

namespace {

constexpr int kErrorType = 3;

// Enough to recognise a value by; a description of a megabyte would bury the message.
constexpr std::size_t kLongestShown = 120;

Obx_String Shown(std::string_view utf8) {
    if (utf8.size() <= kLongestShown) {
        return Obx_String::FromUtf8(utf8);
    }
    std::size_t end = kLongestShown;
    const auto continues = [&utf8](std::size_t at) {
        return (static_cast<unsigned char>(utf8[at]) & 0xC0U) == 0x80U;
    };
    while (end > 0 && continues(end)) {
        --end;
    }
    return Obx_String::FromUtf8(utf8.substr(0, end)) + u" ...";
}

void SetParameters(PaMessage& message, MessageParameters parameters) {
    for (const auto& [name, value] : parameters) {
        message.SetParam(name, Shown(value));
    }
}

}  // namespace

PaMessage ErrorMessage(int id, MessageParameters parameters) {
    PaMessage message(id);
    message.Type(kErrorType);
    SetParameters(message, parameters);
    return message;
}

PaMessage FieldMessage(int id, const schema::RecordType& type, const schema::Field& field,
                       MessageParameters parameters) {
    PaMessage message = ErrorMessage(id, {{u"_datatype_", type.name}, {u"_field_", field.name}});
    SetParameters(message, parameters);
    return message;
}

void ThrowMessage(PaMessage message) {
    throw new PaMsgException(std::move(message));
}

}  // namespace recorddb
