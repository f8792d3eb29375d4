#ifndef PLATFORM_XMLSTREAM_TOKEN_QUEUE_H
#define PLATFORM_XMLSTREAM_TOKEN_QUEUE_H

#include <string>
#include <string_view>
#include <vector>

#include "platform/xmlstream/xmltokens.h"

// Turns the events of an XML parser into the tokens of a stream: joins the pieces of character
// data, decides which white space is a token, and knows which elements are open.
//
// A tag completes the character data before it, and an empty element is two tags, so one event of
// the parser can add up to three tokens.
class TokenQueue {
  public:
    struct Token {
        int type;                        // one of IXmlStream's kStartTag, kEndTag, kCharData
        Obx_String text;                 // a tag's name, or the character data
        XmlSTag::Attributes attributes;  // of a start tag
    };

    // All texts are UTF-8. `attributes` holds names and values by turns and ends with a null.
    void AddStartTag(std::string_view name, const char** attributes);
    // A tag with one attribute; with none when the attribute has no name.
    void AddStartTag(std::string_view name, std::string_view attribute, std::string_view value);
    void AddEndTag(std::string_view name);
    void AddText(std::string_view text);
    // All of the text between two tags, of which the second is added next.
    void AddWholeText(std::string_view text);
    // No tag follows: the input has ended, or is refused from here on.
    void Finish();

    bool IsEmpty() const { return m_next == m_end; }
    // The next token; there must be one. Its texts may be taken or exchanged for others.
    Token& Front() { return m_tokens[m_next]; }
    void Pop() {
        ++m_next;
        if (IsEmpty()) {
            m_next = 0;
            m_end = 0;
        }
    }

    // How many elements are open, and the name of the innermost one, of which there must be one.
    std::size_t Depth() const { return m_openNameEnds.size(); }
    std::string_view OpenName() const;

  private:
    Token& BeginStartTag(std::string_view name);
    void FlushText(bool keepWhiteSpace);
    Token& Add(int type, std::string_view text);

    // Those from m_next up to m_end wait to be taken; the other ones are spare.
    std::vector<Token> m_tokens;
    std::size_t m_next = 0;
    std::size_t m_end = 0;

    std::string m_text;
    bool m_textHasMoreThanSpace = false;
    bool m_textFollowsStartTag = false;

    // The names of the open elements, one after the other, and where each of them ends.
    std::string m_openNames;
    std::vector<std::size_t> m_openNameEnds;
};

#endif
