#ifndef TESTS_PLATFORM_THROWN_TEXT_H
#define TESTS_PLATFORM_THROWN_TEXT_H

#include <string>

#include "platform/foundation/cexception.h"

// The message (UTF-8, the first 999 units) of the CException* that the action throws; "nothing was
// thrown" when it throws none.
template <typename Action>
std::string ThrownText(Action&& action) {
    try {
        action();
    } catch (CException* exception) {
        char16_t text[1000];
        exception->GetErrorMessage(text, 1000);
        exception->Delete();
        return Obx_String(text).ToUtf8();
    }
    return "nothing was thrown";
}

#endif
