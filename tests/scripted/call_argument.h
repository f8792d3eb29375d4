#ifndef TESTS_SCRIPTED_CALL_ARGUMENT_H
#define TESTS_SCRIPTED_CALL_ARGUMENT_H

#include <concepts>
#include <string>
#include <utility>

#include "platform/core/adentitydef.h"
#include "platform/foundation/obx_string.h"

// An argument as a call log shows it: texts and numbers as they are, the empty text as '', a null
// pointer as null.
class CallArgument {
  public:
    CallArgument(const Obx_String& text) : m_shown(text.IsEmpty() ? "''" : text.ToUtf8()) {}
    CallArgument(const unsigned short* text)
        : m_shown(text == nullptr ? "null" : CallArgument(Obx_String(text)).Shown()) {}
    CallArgument(const AdDataObject* definition)
        : m_shown(definition == nullptr ? "null" : NameOf(*definition)) {}
    CallArgument(std::string shown) : m_shown(std::move(shown)) {}
    template <std::integral Integer>
    CallArgument(Integer number) : m_shown(std::to_string(number)) {}

    const std::string& Shown() const { return m_shown; }

    // The name of a scripted definition, asked without leaving a line in the log.
    static std::string NameOf(const AdDataObject& definition);

  private:
    std::string m_shown;
};

#endif
