#ifndef ZTIMPORTER_ADIMPORTER_IMPORTER_TRACE_H
#define ZTIMPORTER_ADIMPORTER_IMPORTER_TRACE_H

#include "ztimporter/adimporter/caught_exceptions.h"
#include "ztimporter/trace.h"

namespace adimporter {

inline constexpr const char16_t* kTag = u"AdImporter";

template <typename... Arguments>
void TraceImporter(const char16_t* format, const Arguments&... arguments) {
    Trace(kTag, format, arguments...);
}

// The end of an operation that failed: traces the error text and returns the result 0. An exception
// of this trace is reported like any other: it joins the error text, which is traced once more.
inline int EndWithError(const char16_t* format, Obx_String& error) noexcept {
    try {
        TraceImporter(format, error);
    } catch (...) {
        AppendCaughtException(error);
        TraceQuietly(kTag, format, error);
    }
    return 0;
}

}  // namespace adimporter

#endif
