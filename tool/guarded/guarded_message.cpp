#include "tool/guarded/guarded_message.h"

#include <memory>

#include "tool/guarded/guarded_text.h"

namespace tool {

PaMessage GuardedMessage(const PaMessage& message) {
    PaMessage guarded = message;
    for (const auto& [name, value] : message.Parameters()) {
        guarded.SetParam(name, Guarded(value, PacketPlace::None));
    }
    return guarded;
}

void ThrowGuarded(PaMsgException* exception) {
    const std::unique_ptr<PaMsgException, void (*)(PaMsgException*)> owner(
        exception, [](PaMsgException* owned) { owned->Delete(); });
    const std::vector<PaMessage>& messages = owner->Messages();
    auto* const guarded = new PaMsgException(GuardedMessage(messages.front()));
    for (std::size_t i = 1; i < messages.size(); ++i) {
        guarded->AddMessage(GuardedMessage(messages[i]));
    }
    throw guarded;
}

}  // namespace tool
