#ifndef TESTS_SCRIPTED_TRACE_LINES_H
#define TESTS_SCRIPTED_TRACE_LINES_H

#include "platform/messages/addiagnostic.h"
#include "tests/scripted/call_log.h"

// While it lives, the importer's traces are switched on and stand in the call log, in their place
// among the calls.
class TraceLines : public AdDiagnosticSink {
  public:
    explicit TraceLines(CallLog& log);
    TraceLines(const TraceLines&) = delete;
    TraceLines& operator=(const TraceLines&) = delete;
    ~TraceLines() override;

    bool Wants(int flag) override;
    void Write(const Obx_String& tag, const Obx_String& text) override;

  private:
    CallLog& m_log;
    AdDiagnosticSink* m_former;
};

#endif
