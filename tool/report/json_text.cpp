#include "tool/report/json_text.h"

#include <fmt/format.h>
#include <unicode/utf16.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tool/text/visible_text.h"

namespace tool {

namespace {

std::string JsonEscapeOf(std::int32_t character, std::string_view /*bytes*/) {
    constexpr std::int32_t lastOfPlane = 0xFFFF;
    if (character <= lastOfPlane) {
        return fmt::format("\\u{:04x}", static_cast<unsigned>(character));
    }
    return fmt::format("\\u{:04x}\\u{:04x}", static_cast<unsigned>(U16_LEAD(character)),
                       static_cast<unsigned>(U16_TRAIL(character)));
}

}  // namespace

std::string JsonText(const nlohmann::ordered_json& json) {
    // The characters to escape occur in strings only, and the text is valid UTF-8 by now.
    return Escaped(json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace),
                   JsonEscapeOf);
}

nlohmann::ordered_json WithUnit(nlohmann::ordered_json object, std::string_view unit) {
    if (unit != "record") {
        object["unit"] = unit;
    }
    return object;
}

}  // namespace tool
