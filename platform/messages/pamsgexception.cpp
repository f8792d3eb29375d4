#include "platform/messages/pamsgexception.h"

#include <memory>

#include "platform/messages/message_ids.h"

PaMsgException::PaMsgException(PaMessage message) : CException(message.FullMsg()) {
    AddMessage(std::move(message));
}

void PaMsgException::AddMessage(PaMessage message) {
    m_messages.push_back(std::move(message));
}

Obx_String AdExtractFirstMsgAndDeleteException(PaMsgException* exception) {
    // The exception is deleted even when there is no memory for the text.
    const std::unique_ptr<PaMsgException, void (*)(PaMsgException*)> owner(
        exception, [](PaMsgException* owned) { owned->Delete(); });
    return owner->Messages().front().FullMsg();
}

int AdGetBadValue0MsgID() {
    return message_id::kBadValue;
}

void AdThrowMsgExcept(int messageId, const Obx_String& text, const Obx_String& sourceFile,
                      int line) {
    Obx_String lineNumber;
    lineNumber.Format(u"%d", line);
    PaMessage message(messageId);
    message.Type(3);
    message.SetParam(u"_text_", text);
    message.SetParam(u"_file_", sourceFile);
    message.SetParam(u"_line_", lineNumber);
    throw new PaMsgException(std::move(message));
}
