#ifndef ZTIMPORTER_PACKETSTREAM_H
#define ZTIMPORTER_PACKETSTREAM_H

#include <spanstream>
#include <string_view>

#include "platform/xmlstream/ixmlstream.h"

// Where the packet's XML begins: 38 bytes into the text when the usual XML declaration occurs
// anywhere in it, else at its first byte. The bytes are counted from the start of the text and not
// from the declaration, which is expected to stand there: packets that have something before it
// lose the beginning of their first element, and callers rely on what they then get.
std::string_view SkipDeclaration(std::string_view text);

// A token stream over text in memory, which it reads in place.
class PacketStream {
  public:
    // `text` must outlive the stream.
    explicit PacketStream(std::string_view text) : m_input(text), m_xml(m_input, false, false) {}

    IXmlStream& Xml() { return m_xml; }

  private:
    std::ispanstream m_input;
    IXmlStream m_xml;
};

// Takes the head of an element whose start tag has been taken: its character data and every end tag
// that follows.
void SkipElementHead(IXmlStream& xml);

// Takes one token of that type if it comes next.
void SkipCharData(IXmlStream& xml);
void SkipEndTag(IXmlStream& xml);

#endif
