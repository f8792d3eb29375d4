#include "ztimporter/adimporter/message_text.h"

#include "platform/messages/pamessage.h"

namespace adimporter {

Obx_String MessageText(int id, std::initializer_list<MessageParameter> parameters) {
    constexpr int kErrorType = 3;
    PaMessage message(id);
    message.Type(kErrorType);
    for (const MessageParameter& parameter : parameters) {
        message.SetParam(parameter.name, parameter.value);
    }
    return message.FullMsg();
}

}  // namespace adimporter
