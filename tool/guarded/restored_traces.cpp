#include "tool/guarded/restored_traces.h"

#include "tool/guarded/guarded_text.h"

namespace tool {

RestoredTraces::RestoredTraces() : m_sink(AdDiagnostic::SetSink(this)) {}

RestoredTraces::~RestoredTraces() {
    AdDiagnostic::SetSink(m_sink);
}

bool RestoredTraces::Wants(int flag) {
    return m_sink != nullptr && m_sink->Wants(flag);
}

void RestoredTraces::Write(const Obx_String& tag, const Obx_String& text) {
    m_sink->Write(tag, Restored(text));
}

}  // namespace tool
