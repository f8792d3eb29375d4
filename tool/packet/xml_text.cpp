#include "tool/packet/xml_text.h"

#include "platform/foundation/markup_escapes.h"
#include "tool/io/byte_set.h"

namespace tool {

namespace {

constexpr ByteSet kEscapedInAttributes([](char c) {
    return std::string_view("&<>\"\t\n\r").find(c) != std::string_view::npos;
});

}  // namespace

std::string EscapedAttribute(std::string_view text) {
    if (!kEscapedInAttributes.IsIn(text)) {
        return std::string(text);
    }
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        if (kEscapedInAttributes.Has(c)) {
            out += MarkupEscapeOf(c);
        } else {
            out += c;
        }
    }
    return out;
}

}  // namespace tool
