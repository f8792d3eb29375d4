#include "tool/packet/packet_head.h"

#include "tool/packet/markup_text.h"

namespace tool {

namespace {

std::string_view WithoutBlanks(std::string_view text) {
    while (!text.empty() && IsXmlBlank(text.front())) {
        text.remove_prefix(1);
    }
    return text;
}

// Position after the ">" that ends the tag at the start of `text`; one inside quotes does not.
std::size_t TagEnd(std::string_view text) {
    char quote = 0;
    for (std::size_t at = 1; at < text.size(); ++at) {
        char c = text[at];
        if (quote != 0) {
            quote = c == quote ? '\0' : quote;
        } else if (c == '>') {
            return at + 1;
        } else if (c == '"' || c == '\'') {
            quote = c;
        }
    }
    return kNotFound;
}

// Position after a document type declaration with its internal subset, if it has one. Quotes and
// comments in the subset are not looked at: the importer refuses the declaration in any case.
std::size_t DoctypeEnd(std::string_view text) {
    std::size_t at = text.find_first_of("[>");
    if (at != kNotFound && text[at] == '[') {
        at = text.find(']', at);
        at = at == kNotFound ? kNotFound : text.find('>', at);
    }
    return at == kNotFound ? kNotFound : at + 1;
}

std::size_t Behind(std::string_view text, std::string_view mark, std::size_t from) {
    std::size_t at = text.find(mark, from);
    return at == kNotFound ? kNotFound : at + mark.size();
}

bool IsConfigurationTag(std::string_view tag) {
    constexpr std::string_view opening = "<configuration";
    return tag.starts_with(opening) &&
           tag.substr(opening.size(), 1).find_first_of(" \t\r\n/>") == 0;
}

// Length of the comment, instruction or document type declaration at the start of `text`: 0 when
// something else stands there, kNotFound when it does not end.
std::size_t SkippedLength(std::string_view text) {
    if (text.starts_with("<!--")) {
        return Behind(text, "-->", 4);
    }
    if (text.starts_with("<?")) {
        return Behind(text, "?>", 2);
    }
    if (text.starts_with("<!") && !text.starts_with(kCDataOpening)) {
        return DoctypeEnd(text);
    }
    return 0;
}

}  // namespace

HeadAnswer ClassifyHead(std::string_view text, bool complete) {
    HeadAnswer unfinished = complete ? HeadAnswer::Data : HeadAnswer::Undecided;
    while (true) {
        text = WithoutBlanks(text);
        if (text.size() < kCDataOpening.size() && !complete) {
            return text.empty() || text[0] == '<' ? unfinished : HeadAnswer::Data;
        }
        std::size_t skipped = SkippedLength(text);
        if (skipped == kNotFound) {
            return unfinished;
        }
        if (skipped > 0) {
            text.remove_prefix(skipped);
            continue;
        }
        if (!text.starts_with('<') || text.starts_with("</") || text.starts_with(kCDataOpening)) {
            return HeadAnswer::Data;
        }
        std::size_t end = TagEnd(text);
        if (end == kNotFound) {
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

bool HasGuardedInstruction(std::string_view text) {
    while (true) {
        text = WithoutBlanks(text);
        const std::size_t skipped = SkippedLength(text);
        if (skipped == 0 || skipped == kNotFound) {
            return false;
        }
        if (text.substr(0, skipped) == kGuardedInstruction) {
            return true;
        }
        text.remove_prefix(skipped);
    }
}

std::string WithPacketDeclaration(std::string_view text) {
    std::string_view body = WithoutBlanks(text);
    std::size_t end = kNotFound;
    if (body.starts_with("<?xml") && body.size() > 5 && IsXmlBlank(body[5])) {
        end = body.find("?>");
    }
    std::string packet(kPacketDeclaration);
    packet += end == kNotFound ? text : body.substr(end + 2);
    return packet;
}

}  // namespace tool
