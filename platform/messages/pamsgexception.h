#ifndef PLATFORM_MESSAGES_PAMSGEXCEPTION_H
#define PLATFORM_MESSAGES_PAMSGEXCEPTION_H

#include <vector>

#include "platform/foundation/cexception.h"
#include "platform/messages/pamessage.h"

// An exception that carries catalogue messages, the first one being the cause. Thrown as a pointer;
// whoever catches it owns it.
class PaMsgException : public CException {
  public:
    explicit PaMsgException(PaMessage message);

    void AddMessage(PaMessage message);
    const std::vector<PaMessage>& Messages() const { return m_messages; }

  protected:
    ~PaMsgException() override = default;

  private:
    std::vector<PaMessage> m_messages;
};

// The text of the exception's first message. Deletes the exception.
Obx_String AdExtractFirstMsgAndDeleteException(PaMsgException* exception);

// The id of the core's message for an argument that an operation cannot take.
int AdGetBadValue0MsgID();

// Throws a PaMsgException* with one message of type 3: `messageId` with the parameters "_text_",
// "_file_" and "_line_".
[[noreturn]] void AdThrowMsgExcept(int messageId, const Obx_String& text,
                                   const Obx_String& sourceFile, int line);

#endif
