#include "platform/foundation/cexception.h"

#include <algorithm>

int CException::GetErrorMessage(char16_t* buffer, unsigned size, unsigned* helpContext) const {
    if (helpContext != nullptr) {
        *helpContext = 0;
    }
    if (buffer == nullptr || size == 0) {
        return 0;
    }
    const std::u16string_view text = Message().View().substr(0, size - 1);
    *std::copy(text.begin(), text.end(), buffer) = u'\0';
    return 1;
}
