#include "tool/packet/exception_text.h"

#include <array>

#include "platform/foundation/cexception.h"

namespace tool {

std::string TakeText(CException* exception) {
    std::array<char16_t, 4096> buffer{};
    exception->GetErrorMessage(buffer.data(), static_cast<unsigned>(buffer.size()));
    exception->Delete();
    return Obx_String(buffer.data()).ToUtf8();
}

}  // namespace tool
