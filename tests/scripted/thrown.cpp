#include "tests/scripted/thrown.h"

#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"

const char* NameOf(ThrownKind kind) {
    switch (kind) {
        case ThrownKind::kMessage:
            return "Message";
        case ThrownKind::kFoundation:
            return "Foundation";
        case ThrownKind::kText:
            return "Text";
        case ThrownKind::kUnknown:
            break;
    }
    return "Unknown";
}

PaMessage CoreMessage(const Obx_String& text) {
    PaMessage message(message_id::kBadValue);
    message.Type(3);
    message.SetParam(u"_text_", text);
    message.SetParam(u"_file_", u"scripted core");
    message.SetParam(u"_line_", u"1");
    return message;
}

void ThrowKind(ThrownKind kind, const Obx_String& text) {
    switch (kind) {
        case ThrownKind::kMessage: {
            auto* exception = new PaMsgException(CoreMessage(text));
            exception->AddMessage(CoreMessage(u"not the first message"));
            throw exception;
        }
        case ThrownKind::kFoundation:
            throw new CException(text);
        case ThrownKind::kText:
            throw new Obx_String(text);
        case ThrownKind::kUnknown:
            break;
    }
    throw 7;
}

Obx_String AppendedTextOf(ThrownKind kind, const Obx_String& text) {
    switch (kind) {
        case ThrownKind::kMessage:
            return u"\n" + CoreMessage(text).FullMsg();
        case ThrownKind::kFoundation:
            return u"\nCaught a CException: " + text;
        case ThrownKind::kText:
            return u"\nCaught a CString: " + text;
        case ThrownKind::kUnknown:
            break;
    }
    return u"\nCaught an unknown exception";
}
