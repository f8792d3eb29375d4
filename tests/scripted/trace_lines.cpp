#include "tests/scripted/trace_lines.h"

TraceLines::TraceLines(CallLog& log) : m_log(log), m_former(AdDiagnostic::SetSink(this)) {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
}

TraceLines::~TraceLines() {
    AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    AdDiagnostic::SetSink(m_former);
}

bool TraceLines::Wants(int flag) {
    return flag == AdDiagnostic::kImportFlag;
}

void TraceLines::Write(const Obx_String& tag, const Obx_String& text) {
    if (tag == u"AdImporter") {
        m_log.Add(CallLog::Kind::kTrace, text.ToUtf8());
    } else {
        m_log.Add(CallLog::Kind::kOtherTrace, (tag + u": " + text).ToUtf8());
    }
}
