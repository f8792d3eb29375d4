#ifndef PLATFORM_XMLSTREAM_IXMLSTREAM_H
#define PLATFORM_XMLSTREAM_IXMLSTREAM_H

#include <istream>
#include <memory>

#include "platform/foundation/obx_string.h"
#include "platform/xmlstream/xmltokens.h"

// Reads XML from a stream of UTF-8 bytes token by token.
//
// It reads a fragment, not a document: text, several top-level elements or the tail of a cut
// declaration before the first tag do not stop it, and an XML declaration at the start is stepped
// over. What is left of a character that was cut at the start reads as U+FFFD. White space that
// stands between tags is not a token, but white space that is the whole content of an element
// (between a start tag and its own end tag) is character data. Character data is one token up to
// the next tag, as written in the source, line ends included; comments and processing instructions
// in it are dropped and the content of CDATA sections is taken as it is. A DOCTYPE is refused.
//
// It parses lazily: what stands after the token asked for cannot make it fail. Malformed XML, and
// elements nested more than 50,000 deep, throw an XmlException*, a CException* that names line,
// column and what is wrong, counted from the stream's start. Text in front of a tag that is refused
// is a token like any other, and so is what could be read of a text that is itself refused; the
// exception comes when the next token is asked for. An input that cannot be read throws an
// XmlException* at once, and a lack of memory throws std::bad_alloc. After any of these every
// further call throws a CException*.
class IXmlStream {
  public:
    // What GetNextTokenType returns.
    static constexpr int kStartTag = 0;
    static constexpr int kEndTag = 1;
    static constexpr int kCharData = 2;
    static constexpr int kEnd = 3;

    // Reads from `input`, which must outlive the stream. Both flags are reserved and must be false.
    IXmlStream(std::istream& input, bool validate, bool expandEntities);
    ~IXmlStream();
    IXmlStream(const IXmlStream&) = delete;
    IXmlStream& operator=(const IXmlStream&) = delete;

    // The type of the next token, which is not consumed. kEnd when none follows.
    int GetNextTokenType();

    // The name of the next tag, which is not consumed. Returns 1, or 0 when the next token is not a
    // tag; `name` is then left as it was.
    int GetNextTokenName(Obx_String& name);

    // Each consumes one token; the next token must be of that type, else an XmlException* is thrown
    // and the token stays the next one.
    IXmlStream& operator>>(XmlSTag& tag);
    IXmlStream& operator>>(XmlETag& tag);
    IXmlStream& operator>>(XmlCharData& data);

  private:
    class Impl;
    std::unique_ptr<Impl> m_impl;
};

#endif
