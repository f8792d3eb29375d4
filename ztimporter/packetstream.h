#ifndef ZTIMPORTER_PACKETSTREAM_H
#define ZTIMPORTER_PACKETSTREAM_H

#include <spanstream>
#include <string_view>

#include "platform/foundation/obx_string.h"
#include "platform/xmlstream/ixmlstream.h"

// The attribute that names fields, and that carries the values of a configuration.
inline const Obx_String name_label = u"name";

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

// Takes the next token if it is a start tag, and its name. False when something else comes next.
bool TakeStartTag(IXmlStream& xml, Obx_String& name, XmlSTag& tag);

// Takes the head of an element whose start tag has been taken: its character data and every end tag
// that follows.
void SkipElementHead(IXmlStream& xml);

// Takes one token of that type if it comes next.
void SkipCharData(IXmlStream& xml);
void SkipEndTag(IXmlStream& xml);

#endif
