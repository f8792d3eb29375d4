#ifndef PLATFORM_FOUNDATION_CEXCEPTION_H
#define PLATFORM_FOUNDATION_CEXCEPTION_H

#include "platform/foundation/obx_string.h"

// Base of the exceptions that are thrown as pointers: `throw new CException(...)`. Whoever catches
// one owns it and ends it with Delete().
class CException {
  public:
    explicit CException(Obx_String message) : m_message(std::move(message)) {}
    CException(const CException&) = delete;
    CException& operator=(const CException&) = delete;

    // Copies the message into the caller's buffer of `size` units, terminator included; a longer
    // message is cut. `helpContext`, when given, is set to 0. Returns 1, or 0 when the buffer is
    // null or has no room.
    virtual int GetErrorMessage(char16_t* buffer, unsigned size,
                                unsigned* helpContext = nullptr) const;

    // Frees the exception; it must not be used afterwards.
    virtual void Delete() { delete this; }

  protected:
    virtual ~CException() = default;
    const Obx_String& Message() const { return m_message; }

  private:
    Obx_String m_message;
};

#endif
