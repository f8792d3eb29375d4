#include "tool/packet/field_search.h"

#include <algorithm>
#include <utility>

#include "tool/packet/importer_text.h"
#include "tool/packet/markup_text.h"
#include "tool/packet/xml_text.h"

namespace tool {

namespace {

// A start tag cut out of a text that may be broken anywhere.
struct StartTag {
    std::string_view name;  // value of its attribute "name", as written
    std::size_t end;        // position after it
    bool empty;             // ends with "/>"
};

// Reads the attribute at `at`, after its leading blanks, and moves `at` past it.
std::pair<std::string_view, std::string_view> ReadAttribute(std::string_view text,
                                                            std::size_t& at) {
    std::size_t nameEnd = std::min(text.find_first_of(" \t\r\n=/><", at), text.size());
    std::string_view name = text.substr(at, nameEnd - at);
    std::size_t equals = text.find_first_not_of(kXmlBlanks, nameEnd);
    if (equals == kNotFound || text[equals] != '=') {
        at = std::max(nameEnd, at + 1);
        return {name, {}};
    }
    std::size_t quote = text.find_first_not_of(kXmlBlanks, equals + 1);
    std::size_t close = kNotFound;
    if (quote != kNotFound && (text[quote] == '"' || text[quote] == '\'')) {
        close = text.find(text[quote], quote + 1);
    }
    if (close == kNotFound) {
        at = equals + 1;
        return {name, {}};
    }
    at = close + 1;
    return {name, text.substr(quote + 1, close - quote - 1)};
}

StartTag ReadStartTag(std::string_view text, std::size_t begin) {
    StartTag tag{{}, text.size(), false};
    std::size_t at = std::min(text.find_first_of(" \t\r\n/>", begin + 1), text.size());
    while ((at = text.find_first_not_of(kXmlBlanks, at)) != kNotFound && text[at] != '<') {
        if (text[at] == '>') {
            tag.end = at + 1;
            return tag;
        }
        tag.empty = text[at] == '/';
        if (tag.empty) {
            ++at;
            continue;
        }
        auto [name, value] = ReadAttribute(text, at);
        if (name == "name") {
            tag.name = value;
        }
    }
    tag.end = std::min(at, text.size());
    return tag;
}

std::size_t BehindOrEnd(std::string_view text, std::string_view mark, std::size_t from) {
    std::size_t found = text.find(mark, from);
    return found == kNotFound ? text.size() : found + mark.size();
}

// The character data from `at` up to the next tag, escapes still in it.
std::string ReadContent(std::string_view text, std::size_t at) {
    std::string content;
    while (at < text.size()) {
        std::size_t tag = std::min(text.find('<', at), text.size());
        content += text.substr(at, tag - at);
        std::string_view rest = text.substr(tag);
        if (rest.starts_with("<!--")) {
            at = BehindOrEnd(text, "-->", tag);
        } else if (rest.starts_with("<?")) {
            at = BehindOrEnd(text, "?>", tag);
        } else if (rest.starts_with(kCDataOpening)) {
            std::size_t close = std::min(text.find("]]>", tag), text.size());
            content += text.substr(tag + kCDataOpening.size(), close - tag - kCDataOpening.size());
            at = std::min(close + 3, text.size());
        } else {
            break;
        }
    }
    return content;
}

// The position after the comment, CDATA section or instruction at `at`, else after its "<".
std::size_t SkipOther(std::string_view text, std::size_t at) {
    std::string_view rest = text.substr(at);
    if (rest.starts_with("<!--")) {
        return BehindOrEnd(text, "-->", at);
    }
    if (rest.starts_with("<![CDATA[")) {
        return BehindOrEnd(text, "]]>", at);
    }
    return at + 1;
}

}  // namespace

std::optional<std::string> FindFieldValue(std::string_view record, std::string_view name) {
    std::optional<std::string> value;
    if (name.empty()) {
        return value;
    }
    std::size_t at = record.find('<');
    while (at != kNotFound && at + 1 < record.size()) {
        char next = record[at + 1];
        if (next == '/' || next == '!' || next == '?') {
            at = record.find('<', SkipOther(record, at));
            continue;
        }
        StartTag tag = ReadStartTag(record, at);
        if (EqualNoCase(DecodePacketEscapes(tag.name), name)) {
            value = tag.empty ? std::string() : DecodePacketEscapes(ReadContent(record, tag.end));
        }
        at = record.find('<', tag.end);
    }
    return value;
}

}  // namespace tool
