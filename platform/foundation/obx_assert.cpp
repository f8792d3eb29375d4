#include "platform/foundation/obx_assert.h"

#include "platform/foundation/cexception.h"

void Obx_Assert(bool condition, const char16_t* text) {
    if (!condition) {
        throw new CException(Obx_String(u"Assertion failed: ") + text);
    }
}
