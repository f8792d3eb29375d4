#include "tool/packet/xml_text.h"

namespace tool {

std::string EscapedAttribute(std::string_view text) {
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
