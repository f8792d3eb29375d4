#ifndef ZTIMPORTER_ADIMPORTER_BAD_VALUE_H
#define ZTIMPORTER_ADIMPORTER_BAD_VALUE_H

#include "platform/foundation/obx_string.h"

namespace adimporter {

// Callers leave `file` and `line` to their defaults, which are the place of the call. (clang 14 has
// no std::source_location.)

// Throws the core's message exception for a value that cannot be worked with. The exception names
// the importer's folder instead of a file, so `text` must be one that occurs in a single place of
// its sources.
[[noreturn]] void ThrowBadValue(const Obx_String& text, int line = __builtin_LINE());

// The object behind a pointer or handle; a null one is a bad value. The text says which condition
// does not hold, and in which source.
[[noreturn]] void ThrowBrokenCondition(const char16_t* condition, const char* file, int line);
template <typename Pointer>
auto& Require(const Pointer& object, const char16_t* condition, const char* file = __builtin_FILE(),
              int line = __builtin_LINE()) {
    if (!object) {
        ThrowBrokenCondition(condition, file, line);
    }
    return *object;
}

}  // namespace adimporter

#endif
