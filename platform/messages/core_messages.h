#ifndef PLATFORM_MESSAGES_CORE_MESSAGES_H
#define PLATFORM_MESSAGES_CORE_MESSAGES_H

#include <array>

#include "platform/messages/catalogue.h"
#include "platform/messages/message_ids.h"

// The core's part of the catalogue, by ascending id.
inline constexpr auto kCoreMessages = std::to_array<CatalogueMessage>({
    {message_id::kBadValue, u"A value cannot be used: _text_ (_file_, line _line_).",
     "An operation was given an argument that it cannot take, such as a session that is not open. "
     "This is a fault of the program that makes the call; report it with the whole text."},
    {message_id::kInvalidUtf16,
     u"The text is not valid UTF-16: the unit at index _position_ belongs to no character.",
     "A packet contains half of a surrogate pair, so it was damaged or cut on its way. Nothing of "
     "it was imported. Produce the packet again, and check how it was converted to UTF-16."},
});

#endif
