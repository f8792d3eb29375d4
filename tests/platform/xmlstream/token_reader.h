#ifndef TESTS_PLATFORM_XMLSTREAM_TOKEN_READER_H
#define TESTS_PLATFORM_XMLSTREAM_TOKEN_READER_H

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <spanstream>
#include <string>
#include <string_view>
#include <vector>

#include "platform/xmlstream/ixmlstream.h"
#include "platform/xmlstream/xmlexception.h"

// What an XmlException held.
struct XmlFailure {
    XmlException::Code code;
    long line;
    long column;
    std::string message;
};

// What the call threw, or nothing. Any other exception than an XmlException* passes.
template <typename Call>
std::optional<XmlFailure> FailureOf(Call&& call) {
    try {
        call();
    } catch (XmlException* exception) {
        std::array<char16_t, 4096> message{};
        exception->GetErrorMessage(message.data(), static_cast<unsigned>(message.size()));
        const XmlFailure failure{exception->GetCode(), exception->GetPosition().line,
                                 exception->GetPosition().column,
                                 Obx_String(message.data()).ToUtf8()};
        exception->Delete();
        return failure;
    }
    return std::nullopt;
}

// A stream over a text, with verbs that take one token and return it in a short form: a start tag
// as "<name>", an end tag as "</name>", character data between apostrophes, the end as "end".
class TokenReader {
  public:
    explicit TokenReader(std::string_view xml) : m_input(xml), m_xml(m_input, false, false) {}

    IXmlStream& Xml() { return m_xml; }

    std::string Next() {
        switch (m_xml.GetNextTokenType()) {
            case IXmlStream::kStartTag:
                m_xml >> m_startTag;
                return "<" + m_startTag.GetName().ToUtf8() + ">";
            case IXmlStream::kEndTag: {
                XmlETag tag;
                m_xml >> tag;
                return "</" + tag.GetName().ToUtf8() + ">";
            }
            case IXmlStream::kCharData: {
                XmlCharData data;
                m_xml >> data;
                return "'" + data.GetImage(nullptr).ToUtf8() + "'";
            }
            default:
                return "end";
        }
    }

    // An attribute of the start tag that Next returned last.
    std::string Attribute(const char16_t* name) const {
        return m_startTag.GetAttributeByName(name).ToUtf8();
    }

    // The remaining tokens, without the end.
    std::vector<std::string> Rest() {
        std::vector<std::string> tokens;
        for (std::string token = Next(); token != "end"; token = Next()) {
            tokens.push_back(token);
        }
        return tokens;
    }

  private:
    std::ispanstream m_input;
    IXmlStream m_xml;
    XmlSTag m_startTag;
};

inline std::vector<std::string> TokensOf(std::string_view xml) {
    return TokenReader(xml).Rest();
}

#endif
