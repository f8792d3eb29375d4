#include "platform/xmlstream/xmlexception.h"

namespace {

Obx_String Describe(XmlPosition position, const Obx_String& what) {
    Obx_String text;
    text.Format(u"XML, line %d, column %d: %s", position.line, position.column, what);
    return text;
}

}  // namespace

XmlException::XmlException(Code code, XmlPosition position, const Obx_String& what)
    : CException(Describe(position, what)), m_code(code), m_position(position) {}
