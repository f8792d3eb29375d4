#ifndef ZTIMPORTER_ADIMPORTER_BAD_VALUE_H
#define ZTIMPORTER_ADIMPORTER_BAD_VALUE_H

#include "platform/messages/pamsgexception.h"

namespace adimporter {

// Throws the core's message exception for a value that cannot be worked with. `text` says what
// should hold, `line` where that was found out.
[[noreturn]] inline void ThrowBadValue(const char16_t* text, int line) {
    AdThrowMsgExcept(AdGetBadValue0MsgID(), text, u"ztimporter/adimporter", line);
}

// The object behind a pointer or handle; a null one is a bad value.
template <typename Pointer>
auto& Require(const Pointer& object, const char16_t* text, int line) {
    if (!object) {
        ThrowBadValue(text, line);
    }
    return *object;
}

}  // namespace adimporter

#endif
