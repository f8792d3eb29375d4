#include "platform/core/adcharset.h"

#include <optional>

#include "platform/foundation/obx_string.h"
#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "platform/messages/pamsgexception.h"

namespace {

[[noreturn]] void ThrowInvalidUtf16(std::size_t position) {
    Obx_String number;
    number.Format(u"%d", position);
    PaMessage message(message_id::kInvalidUtf16);
    message.Type(3);
    message.SetParam(u"_position_", number);
    throw new PaMsgException(std::move(message));
}

}  // namespace

const AdCharset& AdCharset::getUTF8Charset() {
    static const AdCharset kUtf8("UTF-8");
    return kUtf8;
}

// UTF-8 is the only character set, so the first argument decides nothing.
void AdMbcsString::cvtFromTchar(const AdCharset& /*charset*/, const unsigned short* text,
                                AdCharset::converter_t converter) {
    if (converter == AdCharset::converter_t::kLossy) {
        m_data = Obx_String(text).ToUtf8();
    } else if (const std::optional<std::size_t> invalid = Utf16ToUtf8(text, m_data)) {
        ThrowInvalidUtf16(*invalid);
    }
}
