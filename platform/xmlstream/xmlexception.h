#ifndef PLATFORM_XMLSTREAM_XMLEXCEPTION_H
#define PLATFORM_XMLSTREAM_XMLEXCEPTION_H

#include "platform/foundation/cexception.h"

// Where a stream stands: the line, and the character within it, both counted from 1 at the
// beginning of the stream. A byte order mark does not count; the rest of a character that was cut
// counts as one character.
struct XmlPosition {
    long line = 1;
    long column = 1;
};

// What an IXmlStream throws. The message names line, column and what is wrong.
class XmlException : public CException {
  public:
    enum class Code {
        kMalformed,        // the text is not well-formed, or uses what is refused (DOCTYPE)
        kTooDeep,          // elements are nested deeper than the stream follows
        kUnexpectedToken,  // a token was asked for that does not come next
        kUnreadable,       // the input reported a failure
    };

    XmlException(Code code, XmlPosition position, const Obx_String& what);

    Code GetCode() const { return m_code; }
    XmlPosition GetPosition() const { return m_position; }

  private:
    Code m_code;
    XmlPosition m_position;
};

#endif
