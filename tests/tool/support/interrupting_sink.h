#ifndef TESTS_TOOL_INTERRUPTING_SINK_H
#define TESTS_TOOL_INTERRUPTING_SINK_H

#include <csignal>
#include <utility>

#include "platform/messages/addiagnostic.h"

namespace tool {

// Interrupts the process when the importer says something for the n-th time: by default, when it
// has done the first record.
class InterruptingSink : public AdDiagnosticSink {
  public:
    explicit InterruptingSink(Obx_String when = u"ImportRecord ends", int time = 1)
        : m_former(AdDiagnostic::SetSink(this)), m_when(std::move(when)), m_timesLeft(time) {
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
        if (text == m_when && --m_timesLeft == 0) {
            std::raise(SIGTERM);
        }
    }

  private:
    AdDiagnosticSink* m_former;
    Obx_String m_when;
    int m_timesLeft;
};

}  // namespace tool

#endif
