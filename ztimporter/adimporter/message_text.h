#ifndef ZTIMPORTER_ADIMPORTER_MESSAGE_TEXT_H
#define ZTIMPORTER_ADIMPORTER_MESSAGE_TEXT_H

#include <initializer_list>

#include "platform/foundation/obx_string.h"

namespace adimporter {

// A parameter; lives only as long as the call that it is written in.
struct MessageParameter {
    const char16_t* name;
    const Obx_String& value;
};

// The full text of a catalogue message of the error type, its parameters set in the given order.
Obx_String MessageText(int id, std::initializer_list<MessageParameter> parameters);

}  // namespace adimporter

#endif
