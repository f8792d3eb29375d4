#include "ztimporter/adimporter/bad_value.h"

#include <string_view>

#include "platform/messages/pamsgexception.h"

namespace adimporter {

void ThrowBadValue(const Obx_String& text, int line) {
    AdThrowMsgExcept(AdGetBadValue0MsgID(), text, u"ztimporter/adimporter", line);
}

void ThrowBrokenCondition(const char16_t* condition, const char* file, int line) {
    // Without the folders, which differ between the machines that the library is built on.
    std::string_view source(file);
    source.remove_prefix(source.rfind('/') + 1);
    ThrowBadValue(condition + (u" in " + Obx_String::FromUtf8(source)), line);
}

}  // namespace adimporter
