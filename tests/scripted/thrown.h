#ifndef TESTS_SCRIPTED_THROWN_H
#define TESTS_SCRIPTED_THROWN_H

#include <array>

#include "platform/foundation/obx_string.h"
#include "platform/messages/pamessage.h"

// The kinds of exception that a core can throw at its caller.
enum class ThrownKind {
    // A PaMsgException* of two messages, the first one made by CoreMessage.
    kMessage,
    // A CException*.
    kFoundation,
    // An Obx_String*.
    kText,
    // An int.
    kUnknown,
};

inline constexpr std::array kThrownKinds = {ThrownKind::kMessage, ThrownKind::kFoundation,
                                            ThrownKind::kText, ThrownKind::kUnknown};

const char* NameOf(ThrownKind kind);

// A message as a core reports it: its id is not 0 and its text holds `text`.
PaMessage CoreMessage(const Obx_String& text);

[[noreturn]] void ThrowKind(ThrownKind kind, const Obx_String& text);

// What the importer's operations add to their error text for such an exception.
Obx_String AppendedTextOf(ThrownKind kind, const Obx_String& text);

#endif
