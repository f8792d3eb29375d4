#include "ztimporter/packetstream.h"

bool TakeStartTag(IXmlStream& xml, Obx_String& name, XmlSTag& tag) {
    while (xml.GetNextTokenType() == IXmlStream::kStartTag) {
        if (xml.GetNextTokenName(name) != 0) {
            xml >> tag;
            return true;
        }
    }
    return false;
}

void SkipElementHead(IXmlStream& xml) {
    SkipCharData(xml);
    while (xml.GetNextTokenType() == IXmlStream::kEndTag) {
        SkipEndTag(xml);
    }
}

void SkipCharData(IXmlStream& xml) {
    if (xml.GetNextTokenType() == IXmlStream::kCharData) {
        XmlCharData data;
        xml >> data;
    }
}

void SkipEndTag(IXmlStream& xml) {
    if (xml.GetNextTokenType() == IXmlStream::kEndTag) {
        XmlETag tag;
        xml >> tag;
    }
}
