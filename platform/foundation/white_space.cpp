#include "platform/foundation/white_space.h"

#include <unicode/uchar.h>

bool IsWhiteSpace(char16_t unit) {
    if (unit < 0x80) {
        return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
    }
    return u_isUWhiteSpace(unit) != 0;
}
