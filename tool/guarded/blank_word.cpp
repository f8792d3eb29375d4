#include "tool/guarded/blank_word.h"

#include <cstddef>

#include "platform/foundation/obx_string.h"

namespace tool {

bool IsBlankWord(std::string_view value) {
    // Most values begin otherwise or are far longer. "B" is no other letter's other case, and no
    // letter's other cases take more than three bytes.
    constexpr std::size_t longest = std::size_t{5} * 3;
    const bool mayBe = !value.empty() && (value[0] == 'B' || value[0] == 'b');
    return mayBe && value.size() <= longest &&
           Obx_String::FromUtf8(value).CompareNoCase(u"BLANK") == 0;
}

}  // namespace tool
