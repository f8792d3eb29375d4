#include <expat.h>

#include <memory>
#include <optional>
#include <spanstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "input.h"
#include "platform/xmlstream/ixmlstream.h"
#include "platform/xmlstream/xmlexception.h"

namespace {

using fuzz::Expect;

struct Reading {
    std::vector<std::string> tokens;  // "<name>", "</name>" or "'text"
    std::optional<XmlPosition> failed;

    bool HasTheTokensOf(const Reading& other) const {
        return tokens == other.tokens && failed.has_value() == other.failed.has_value();
    }
};

// Takes the next token; false at the end. `open` holds the names of the elements that are open.
bool TakeToken(IXmlStream& xml, std::vector<std::string>& open, std::vector<std::string>& tokens) {
    const int type = xml.GetNextTokenType();
    Expect(type == xml.GetNextTokenType(), "looking at a token does not take it");
    Obx_String name;
    const bool isTag = xml.GetNextTokenName(name) != 0;
    Expect(isTag == (type == IXmlStream::kStartTag || type == IXmlStream::kEndTag),
           "tags have names, and nothing else has");
    if (type == IXmlStream::kEnd) {
        Expect(open.empty(), "the end comes when every element is closed");
        return false;
    }
    if (type == IXmlStream::kStartTag) {
        XmlSTag tag;
        xml >> tag;
        Expect(tag.GetName() == name, "the tag is the one that was looked at");
        open.push_back(name.ToUtf8());
        tokens.push_back("<" + name.ToUtf8() + ">");
    } else if (type == IXmlStream::kEndTag) {
        XmlETag tag;
        xml >> tag;
        Expect(!open.empty() && open.back() == tag.GetName().ToUtf8(), "end tags match");
        open.pop_back();
        tokens.push_back("</" + tag.GetName().ToUtf8() + ">");
    } else {
        XmlCharData data;
        xml >> data;
        const std::string text = data.GetImage(nullptr).ToUtf8();
        Expect(!text.empty(), "character data is not empty");
        Expect(tokens.empty() || tokens.back()[0] != '\'', "text up to a tag is one token");
        tokens.push_back("'" + text);
    }
    return true;
}

Reading Read(std::string_view text) {
    Reading reading;
    std::ispanstream input(text);
    IXmlStream xml(input, false, false);
    std::vector<std::string> open;
    try {
        while (TakeToken(xml, open, reading.tokens)) {
        }
    } catch (XmlException* exception) {
        reading.failed = exception->GetPosition();
        exception->Delete();
        Expect(reading.failed->line >= 1 && reading.failed->column >= 1, "failures have a place");
    }
    return reading;
}

// The tags of a document as expat reads it by itself; nothing when it is not well-formed or has a
// DOCTYPE.
std::optional<std::vector<std::string>> TagsOfDocument(std::string_view text) {
    struct Tags {
        std::vector<std::string> names;
        bool hasDoctype = false;
    } tags;
    const std::unique_ptr<XML_ParserStruct, decltype(&XML_ParserFree)> parser(
        XML_ParserCreate("UTF-8"), XML_ParserFree);
    XML_SetUserData(parser.get(), &tags);
    XML_SetElementHandler(
        parser.get(),
        [](void* to, const char* name, const char**) {
            static_cast<Tags*>(to)->names.push_back("<" + std::string(name) + ">");
        },
        [](void* to, const char* name) {
            static_cast<Tags*>(to)->names.push_back("</" + std::string(name) + ">");
        });
    XML_SetStartDoctypeDeclHandler(parser.get(),
                                   [](void* to, const char*, const char*, const char*, int) {
                                       static_cast<Tags*>(to)->hasDoctype = true;
                                   });
    const bool wellFormed = XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()),
                                      XML_TRUE) == XML_STATUS_OK;
    return wellFormed && !tags.hasDoctype ? std::optional(std::move(tags.names)) : std::nullopt;
}

std::vector<std::string> TagsOf(const Reading& reading) {
    std::vector<std::string> tags;
    for (const std::string& token : reading.tokens) {
        if (token[0] == '<') {
            tags.push_back(token);
        }
    }
    return tags;
}

// An input may have a byte order mark, a declaration or the rest of a character only where it
// begins.
bool MayStandAnywhere(std::string_view text) {
    constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
    const bool isCut = !text.empty() && (static_cast<std::uint8_t>(text[0]) & 0xC0U) == 0x80U;
    return !isCut && !text.starts_with(byteOrderMark) && !text.starts_with("<?xml");
}

// `text` after a comment so long that the stream's first chunk of input ends `border` bytes into
// it.
std::string Shifted(std::string_view text, std::size_t border) {
    constexpr std::size_t chunk = 2048;
    constexpr std::size_t marks = 7;
    return "<!--" + std::string(chunk - marks - border, 'x') + "-->" + std::string(text);
}

}  // namespace

// However the text is divided into chunks, the tokens are the same; and of a whole document the
// tags are those that any XML reader sees.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::Input input(data, size);
    const std::size_t border = input.TakeChoice();
    const std::string_view text = input.Text();
    const Reading reading = Read(text);
    if (MayStandAnywhere(text)) {
        Expect(Read(Shifted(text, border)).HasTheTokensOf(reading),
               "tokens do not depend on the borders of chunks");
    }
    if (const auto tags = TagsOfDocument(text)) {
        Expect(!reading.failed, "a well-formed document is read to its end");
        Expect(TagsOf(reading) == *tags, "the tags are those of the document");
    }
    return 0;
}
