#ifndef PLATFORM_XMLSTREAM_XMLTOKENS_H
#define PLATFORM_XMLSTREAM_XMLTOKENS_H

#include <utility>
#include <vector>

#include "platform/foundation/obx_string.h"

// A start tag with its attributes.
class XmlSTag {
  public:
    using Attributes = std::vector<std::pair<Obx_String, Obx_String>>;

    XmlSTag() = default;
    XmlSTag(Obx_String name, Attributes attributes)
        : m_name(std::move(name)), m_attributes(std::move(attributes)) {}

    const Obx_String& GetName() const { return m_name; }

    // The decoded value of the attribute of exactly this name; empty text when there is none.
    Obx_String GetAttributeByName(const Obx_String& name) const;

    // Becomes the tag with this name and these attributes, in whose place it leaves its former ones
    // for their memory.
    void Take(Obx_String&& name, Attributes& attributes) noexcept {
        m_name = std::move(name);
        m_attributes.swap(attributes);
    }

  private:
    Obx_String m_name;
    Attributes m_attributes;
};

// An end tag. The end of an empty element (<a/>) is one as well.
class XmlETag {
  public:
    XmlETag() = default;
    explicit XmlETag(Obx_String name) : m_name(std::move(name)) {}

    const Obx_String& GetName() const { return m_name; }

  private:
    Obx_String m_name;
};

// Converts character data on its way out of XmlCharData::GetImage.
class XmlConverter {
  public:
    virtual ~XmlConverter() = default;
    virtual Obx_String Convert(const Obx_String& image) = 0;
};

// Character data.
class XmlCharData {
  public:
    XmlCharData() = default;
    explicit XmlCharData(Obx_String image) : m_image(std::move(image)) {}

    // The text as it is written in the source, escapes still in place, passed through `converter`
    // unless that is null. An rvalue hands over its text instead of a copy.
    Obx_String GetImage(XmlConverter* converter) const&;
    Obx_String GetImage(XmlConverter* converter) &&;

  private:
    Obx_String m_image;
};

#endif
