#ifndef TOOL_GUARDED_GUARDED_MESSAGE_H
#define TOOL_GUARDED_GUARDED_MESSAGE_H

#include "platform/messages/pamessage.h"
#include "platform/messages/pamsgexception.h"

namespace tool {

// The same message about guarded values. Texts that are made of several messages can then be
// restored as a whole.
PaMessage GuardedMessage(const PaMessage& message);

// Does the work, and lets the messages that it throws speak of guarded values.
template <typename Work>
auto WithGuardedMessages(Work work);

// Throws the messages of `exception`, which it deletes.
[[noreturn]] void ThrowGuarded(PaMsgException* exception);

template <typename Work>
auto WithGuardedMessages(Work work) {
    try {
        return work();
    } catch (PaMsgException* exception) {
        ThrowGuarded(exception);
    }
}

}  // namespace tool

#endif
