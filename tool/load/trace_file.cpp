#include "tool/load/trace_file.h"

#include <system_error>

#include "tool/io/write_error.h"
#include "tool/process/usage_error.h"

namespace tool {

TraceFile::TraceFile(const std::filesystem::path& path) try : m_file(path), m_former(nullptr) {
    m_file.Place();
    m_former = AdDiagnostic::SetSink(this);
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
} catch (const std::system_error& error) {
    throw UsageError("the trace file " + path.string() +
                     " cannot be written; name another file or folder (" + error.code().message() +
                     ")");
}

TraceFile::~TraceFile() {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    AdDiagnostic::SetSink(m_former);
}

void TraceFile::Finish() {
    if (m_failure) {
        std::rethrow_exception(m_failure);
    }
    m_file.Finish();
}

void TraceFile::Write(const Obx_String& tag, const Obx_String& text) {
    if (m_failure) {
        return;
    }
    try {
        // Written line by line, so that the file tells how far a run came that was killed.
        m_file.Append(tag.ToUtf8() + ": " + text.ToUtf8() + '\n');
    } catch (const WriteError&) {
        m_failure = std::current_exception();
    }
}

}  // namespace tool
