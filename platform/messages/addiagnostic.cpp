#include "platform/messages/addiagnostic.h"

namespace {

std::atomic<AdDiagnosticSink*> g_sink = nullptr;

}  // namespace

std::atomic<std::uint64_t> AdDiagnostic::s_flags = 0;

bool AdDiagnostic::IsEnabled(int flag) {
    AdDiagnosticSink* sink = g_sink.load(std::memory_order_acquire);
    return FlagSet(flag) && sink != nullptr && sink->Wants(flag);
}

void AdDiagnostic::Report(const Obx_String& tag, const Obx_String& text) {
    if (AdDiagnosticSink* sink = g_sink.load(std::memory_order_acquire)) {
        sink->Write(tag, text);
    }
}

void AdDiagnostic::SetFlag(int flag, bool on) {
    if (on) {
        s_flags.fetch_or(Bit(flag), std::memory_order_relaxed);
    } else {
        s_flags.fetch_and(~Bit(flag), std::memory_order_relaxed);
    }
}

AdDiagnosticSink* AdDiagnostic::SetSink(AdDiagnosticSink* sink) {
    return g_sink.exchange(sink, std::memory_order_acq_rel);
}
