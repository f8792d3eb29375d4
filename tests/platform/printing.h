#ifndef TESTS_PLATFORM_PRINTING_H
#define TESTS_PLATFORM_PRINTING_H

#include <ostream>

#include "platform/foundation/obx_string.h"

// How a failing test shows a string.
inline void PrintTo(const Obx_String& text, std::ostream* out) {
    *out << '"' << text.ToUtf8() << '"';
}

#endif
