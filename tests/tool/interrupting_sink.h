#ifndef TESTS_TOOL_INTERRUPTING_SINK_H
#define TESTS_TOOL_INTERRUPTING_SINK_H

#include <csignal>

#include "platform/messages/addiagnostic.h"

namespace tool {

// Interrupts the process when the importer has done the first record.
class InterruptingSink : public AdDiagnosticSink {
  public:
    InterruptingSink() : m_former(AdDiagnostic::SetSink(this)) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    }
    ~InterruptingSink() override {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
        AdDiagnostic::SetSink(m_former);
    }
    InterruptingSink(const InterruptingSink&) = delete;
    InterruptingSink& operator=(const InterruptingSink&) = delete;

    bool Wants(int /*flag*/) override { return true; }
    void Write(const Obx_String& /*tag*/, const Obx_String& text) override {
        if (text == u"ImportRecord ends") {
            std::raise(SIGTERM);
        }
    }

  private:
    AdDiagnosticSink* m_former;
};

}  // namespace tool

#endif
