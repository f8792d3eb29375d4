#ifndef PLATFORM_MESSAGES_ADDIAGNOSTIC_H
#define PLATFORM_MESSAGES_ADDIAGNOSTIC_H

#include <atomic>
#include <cstdint>

#include "platform/foundation/obx_string.h"

// Takes the traces that are reported.
class AdDiagnosticSink {
  public:
    virtual ~AdDiagnosticSink() = default;
    // Whether this sink wants the traces of a flag.
    virtual bool Wants(int flag) = 0;
    // `tag` names the class that reports.
    virtual void Write(const Obx_String& tag, const Obx_String& text) = 0;
};

// The process's diagnostic facility: numbered flags that a user switches, and one sink. A trace is
// written only when its flag is set and IsEnabled confirms it; FlagSet is the cheap test that comes
// first, so that a trace that is off costs one predictable branch.
class AdDiagnostic {
  public:
    // The flag of the importer's traces.
    static constexpr int kImportFlag = 58;

    // Flags are numbered 0 to 63; others are never set.
    static bool FlagSet(int flag) {
        return (s_flags.load(std::memory_order_relaxed) & Bit(flag)) != 0;
    }

    // True when the flag is set and a sink is installed that wants it.
    static bool IsEnabled(int flag);

    // Hands the trace to the sink, if there is one.
    static void Report(const Obx_String& tag, const Obx_String& text);

    static void SetFlag(int flag, bool on);

    // Installs the sink (null for none), which stays the caller's and must outlive its use. Returns
    // the former one. Not to be called while another thread traces.
    static AdDiagnosticSink* SetSink(AdDiagnosticSink* sink);

  private:
    static constexpr std::uint64_t Bit(int flag) {
        return flag >= 0 && flag < 64 ? std::uint64_t{1} << static_cast<unsigned>(flag) : 0;
    }

    static std::atomic<std::uint64_t> s_flags;
};

#endif
