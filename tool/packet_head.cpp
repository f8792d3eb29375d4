#include "tool/packet_head.h"

#include <algorithm>

namespace tool {

namespace {

constexpr std::size_t npos = std::string_view::npos;
constexpr std::string_view blanks = " \t\r\n";
constexpr std::string_view cdataOpening = "<![CDATA[";

std::string_view WithoutBlanks(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(blanks), text.size()));
    return text;
}

// Position behind the ">" that ends the tag at the start of TEXT; one inside quotes does not.
std::size_t TagEnd(std::string_view text) {
    std::size_t at = 1;
    while ((at = text.find_first_of("\"'>", at)) != npos) {
        if (text[at] == '>') {
            return at + 1;
        }
        at = text.find(text[at], at + 1);
        if (at == npos) {
            break;
        }
        ++at;
    }
    return npos;
}

// Position behind a document type declaration with its internal subset, if it has one. Quotes and
// comments in the subset are not looked at: the importer refuses the declaration in any case.
std::size_t DoctypeEnd(std::string_view text) {
    std::size_t at = text.find_first_of("[>");
    if (at != npos && text[at] == '[') {
        at = text.find(']', at);
        at = at == npos ? npos : text.find('>', at);
    }
    return at == npos ? npos : at + 1;
}

std::size_t Behind(std::string_view text, std::string_view mark, std::size_t from) {
    std::size_t at = text.find(mark, from);
    return at == npos ? npos : at + mark.size();
}

bool IsConfigurationTag(std::string_view tag) {
    return tag.substr(1, tag.find_first_of(" \t\r\n/>", 1) - 1) == "configuration";
}

// Length of the comment, instruction or document type declaration at the start of TEXT: 0 when
// something else stands there, npos when it does not end.
std::size_t SkippedLength(std::string_view text) {
    if (text.starts_with("<!--")) {
        return Behind(text, "-->", 4);
    }
    if (text.starts_with("<?")) {
        return Behind(text, "?>", 2);
    }
    if (text.starts_with("<!") && !text.starts_with(cdataOpening)) {
        return DoctypeEnd(text);
    }
    return 0;
}

}  // namespace

HeadAnswer ClassifyHead(std::string_view text, bool complete) {
    HeadAnswer unfinished = complete ? HeadAnswer::Data : HeadAnswer::Undecided;
    while (true) {
        text = WithoutBlanks(text);
        if (text.size() < cdataOpening.size() && !complete) {
            return text.empty() || text[0] == '<' ? unfinished : HeadAnswer::Data;
        }
        std::size_t skipped = SkippedLength(text);
        if (skipped == npos) {
            return unfinished;
        }
        if (skipped > 0) {
            text.remove_prefix(skipped);
            continue;
        }
        if (!text.starts_with('<') || text.starts_with("</") || text.starts_with(cdataOpening)) {
            return HeadAnswer::Data;
        }
        std::size_t end = TagEnd(text);
        if (end == npos) {
            return complete && IsConfigurationTag(text) ? HeadAnswer::Configuration : unfinished;
        }
        if (IsConfigurationTag(text)) {
            return HeadAnswer::Configuration;
        }
        if (text[end - 2] == '/') {
            return HeadAnswer::Data;
        }
        text.remove_prefix(end);
    }
}

std::string WithPacketDeclaration(std::string_view text) {
    std::string_view body = WithoutBlanks(text);
    std::size_t end = npos;
    if (body.starts_with("<?xml") && body.size() > 5 && blanks.find(body[5]) != npos) {
        end = body.find("?>");
    }
    std::string packet(packetDeclaration);
    packet += end == npos ? text : body.substr(end + 2);
    return packet;
}

}  // namespace tool
