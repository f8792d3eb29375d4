#ifndef ZTIMPORTER_ADIMPORTER_IMPORTER_TRACE_H
#define ZTIMPORTER_ADIMPORTER_IMPORTER_TRACE_H

#include "ztimporter/trace.h"

namespace adimporter {

inline constexpr const char16_t* kTag = u"AdImporter";

template <typename... Arguments>
void TraceImporter(const char16_t* format, const Arguments&... arguments) {
    Trace(kTag, format, arguments...);
}

// The end of an operation that failed: traces the error text and returns the result 0.
inline int EndWithError(const char16_t* format, const Obx_String& error) {
    TraceImporter(format, error);
    return 0;
}

}  // namespace adimporter

#endif
