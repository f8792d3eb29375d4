#include "tool/packet/xml_text.h"

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
        switch (c) {
            case '&':
                out += "&amp;";
                break;
            case '<':
                out += "&lt;";
                break;
            case '>':
                out += "&gt;";
                break;
            case '"':
                out += "&quot;";
                break;
            case '\t':
                out += "&#x9;";
                break;
            case '\n':
                out += "&#xA;";
                break;
            case '\r':
                out += "&#xD;";
                break;
            default:
                out += c;
        }
    }
    return out;
}

}  // namespace tool
