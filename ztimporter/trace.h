#ifndef ZTIMPORTER_TRACE_H
#define ZTIMPORTER_TRACE_H

#include <type_traits>

#include "platform/foundation/cexception.h"
#include "platform/foundation/obx_string.h"
#include "platform/messages/addiagnostic.h"

// The value of a trace's argument: what a callable returns, else the argument itself.
template <typename Argument>
decltype(auto) TraceValue(const Argument& argument) {
    if constexpr (std::is_invocable_v<const Argument&>) {
        return argument();
    } else {
        return (argument);
    }
}

// What Trace does once its flag is set; kept apart so that little code stands where operations
// trace.
template <typename... Arguments>
[[gnu::cold, gnu::noinline]] void WriteTrace(const char16_t* tag, const char16_t* format,
                                             const Arguments&... arguments) {
    if (AdDiagnostic::IsEnabled(AdDiagnostic::kImportFlag)) {
        Obx_String text;
        text.Format(format, TraceValue(arguments)...);
        AdDiagnostic::Report(tag, text);
    }
}

// Traces an operation of the class that `tag` names; `format` is Obx_String::Format's. An argument
// that costs something to find out is given as a callable, which is called only when the trace is
// written.
template <typename... Arguments>
void Trace(const char16_t* tag, const char16_t* format, const Arguments&... arguments) {
    if (AdDiagnostic::FlagSet(AdDiagnostic::kImportFlag)) [[unlikely]] {
        WriteTrace(tag, format, arguments...);
    }
}

// For places where a failure of the sink cannot be reported to anybody: it is ignored.
template <typename... Arguments>
void TraceQuietly(const char16_t* tag, const char16_t* format,
                  const Arguments&... arguments) noexcept {
    try {
        Trace(tag, format, arguments...);
    } catch (CException* failure) {
        failure->Delete();
    } catch (Obx_String* text) {
        delete text;
    } catch (...) {
        return;
    }
}

// Traces the end of an object. A sink that fails must not end the process, which an exception
// leaving a destructor would.
inline void TraceDestructor(const char16_t* tag) noexcept {
    TraceQuietly(tag, u"Destructor");
}

#endif
