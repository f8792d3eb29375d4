#include "platform/xmlstream/xmltokens.h"

Obx_String XmlSTag::GetAttributeByName(const Obx_String& name) const {
    for (const auto& [key, value] : m_attributes) {
        if (key == name) {
            return value;
        }
    }
    return Obx_String();
}

Obx_String XmlCharData::GetImage(XmlConverter* converter) const& {
    return converter == nullptr ? m_image : converter->Convert(m_image);
}

Obx_String XmlCharData::GetImage(XmlConverter* converter) && {
    return converter == nullptr ? std::move(m_image) : converter->Convert(m_image);
}
