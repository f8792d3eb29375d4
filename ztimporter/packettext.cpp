#include "ztimporter/packettext.h"

#include "ztimporter/trace.h"

void PacketText::SetInputData(const char16_t* tag, const char* text) {
    constexpr std::string_view kDeclaration = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    static_assert(kDeclaration.size() == 38);
    if (text == nullptr) {
        Trace(tag, u"SetInputData, m_strXML is NULL.");
        return;
    }
    m_rest = text;
    Trace(tag, u"SetInputData, m_strXML length = %d", m_rest.size());
    if (m_rest.find(kDeclaration) != std::string_view::npos) {
        m_rest.remove_prefix(kDeclaration.size());
    }
}
