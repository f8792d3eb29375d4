#ifndef TOOL_LOAD_TRACE_FILE_H
#define TOOL_LOAD_TRACE_FILE_H

#include <exception>
#include <filesystem>

#include "platform/messages/addiagnostic.h"
#include "tool/io/replacing_file.h"

namespace tool {

// Writes the importer's traces to a file, one line each, for as long as it lives: it switches the
// importer's diagnostic flag on and takes the process's diagnostic sink.
class TraceFile : public AdDiagnosticSink {
  public:
    // Replaces the file at `path` at once. See ReplacingFile for links and for what is not a
    // regular file. Throws UsageError when it cannot be written.
    explicit TraceFile(const std::filesystem::path& path);
    ~TraceFile() override;
    TraceFile(const TraceFile&) = delete;
    TraceFile& operator=(const TraceFile&) = delete;

    // Throws WriteError when a trace could not be written; those after it are missing. Write itself
    // does not throw it, since that would disturb the importer.
    void Finish();

    bool Wants(int flag) override { return flag == AdDiagnostic::kImportFlag; }
    void Write(const Obx_String& tag, const Obx_String& text) override;

  private:
    ReplacingFile m_file;
    AdDiagnosticSink* m_former;
    std::exception_ptr m_failure;
};

}  // namespace tool

#endif
