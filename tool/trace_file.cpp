#include "tool/trace_file.h"

#include "tool/usage_error.h"

namespace tool {

TraceFile::TraceFile(const std::filesystem::path& path)
    : m_file(path, std::ios::binary | std::ios::trunc), m_former(nullptr) {
    if (!m_file) {
        throw UsageError("the trace file " + path.string() +
                         " cannot be written; name another file or folder");
    }
    m_former = AdDiagnostic::SetSink(this);
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
}

TraceFile::~TraceFile() {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    AdDiagnostic::SetSink(m_former);
}

void TraceFile::Write(const Obx_String& tag, const Obx_String& text) {
    // Flushed line by line, so that the file tells how far a run came that was killed.
    m_file << tag.ToUtf8() << ": " << text.ToUtf8() << std::endl;
}

}  // namespace tool
