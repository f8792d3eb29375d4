#ifndef TOOL_GUARDED_RESTORED_TRACES_H
#define TOOL_GUARDED_RESTORED_TRACES_H

#include "platform/messages/addiagnostic.h"

namespace tool {

// For as long as it lives, what is traced reaches the process's diagnostic sink restored.
class RestoredTraces : private AdDiagnosticSink {
  public:
    RestoredTraces();
    ~RestoredTraces() override;
    RestoredTraces(const RestoredTraces&) = delete;
    RestoredTraces& operator=(const RestoredTraces&) = delete;

  private:
    bool Wants(int flag) override;
    void Write(const Obx_String& tag, const Obx_String& text) override;

    AdDiagnosticSink* m_sink;
};

}  // namespace tool

#endif
