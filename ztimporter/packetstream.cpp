#include "ztimporter/packetstream.h"

std::string_view SkipDeclaration(std::string_view text) {
    constexpr std::string_view kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    static_assert(kDeclaration.size() == 38);
    if (text.find(kDeclaration) != std::string_view::npos) {
        text.remove_prefix(kDeclaration.size());
    }
    return text;
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
