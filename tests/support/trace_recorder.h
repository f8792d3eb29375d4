#ifndef TESTS_SUPPORT_TRACE_RECORDER_H
#define TESTS_SUPPORT_TRACE_RECORDER_H

#include <string>
#include <utility>
#include <vector>

#include "platform/messages/addiagnostic.h"

// Switches the importer's traces on and records them, for as long as it lives.
class TraceRecorder : public AdDiagnosticSink {
  public:
    TraceRecorder() : m_former(AdDiagnostic::SetSink(this)) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    }
    ~TraceRecorder() override {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
        AdDiagnostic::SetSink(m_former);
    }
    TraceRecorder(const TraceRecorder&) = delete;
    TraceRecorder& operator=(const TraceRecorder&) = delete;

    // The traces since the last call, in order, each as "tag: text".
    std::vector<std::string> Take() { return std::exchange(m_traces, {}); }

    bool Wants(int flag) override { return flag == AdDiagnostic::kImportFlag; }
    void Write(const Obx_String& tag, const Obx_String& text) override {
        m_traces.push_back(tag.ToUtf8() + ": " + text.ToUtf8());
    }

  private:
    AdDiagnosticSink* m_former;
    std::vector<std::string> m_traces;
};

#endif
