#ifndef TESTS_ZTIMPORTER_THROWING_SINK_H
#define TESTS_ZTIMPORTER_THROWING_SINK_H

#include <string>
#include <utility>

#include "platform/messages/addiagnostic.h"
#include "tests/scripted/call_log.h"
#include "tests/scripted/thrown.h"

// While it lives, it takes the place of the sink that was there, and throws at every trace that
// begins with a given text. Traces are the one place at which a test can break into whatever the
// importer does. The trace itself is not written; all others go to the log, as those of TraceLines
// do.
class ThrowingSink : public AdDiagnosticSink {
  public:
    // `most`: how many traces throw; those after them go to the log.
    ThrowingSink(CallLog& log, ThrownKind kind, std::string beginning, int most = 1000)
        : m_log(log),
          m_kind(kind),
          m_beginning(std::move(beginning)),
          m_left(most),
          m_former(AdDiagnostic::SetSink(this)) {}
    ThrowingSink(const ThrowingSink&) = delete;
    ThrowingSink& operator=(const ThrowingSink&) = delete;
    ~ThrowingSink() override { AdDiagnostic::SetSink(m_former); }

    bool Wants(int flag) override { return flag == AdDiagnostic::kImportFlag; }
    void Write(const Obx_String& tag, const Obx_String& text) override {
        const std::string shown = text.ToUtf8();
        if (m_left > 0 && shown.starts_with(m_beginning)) {
            --m_left;
            ++m_thrown;
            ThrowKind(m_kind, u"boom");
        }
        const bool importers = tag == u"AdImporter";
        m_log.Add(importers ? CallLog::Kind::kTrace : CallLog::Kind::kOtherTrace,
                  importers ? shown : tag.ToUtf8() + ": " + shown);
    }

    int Thrown() const { return m_thrown; }

  private:
    CallLog& m_log;
    ThrownKind m_kind;
    std::string m_beginning;
    int m_left;
    int m_thrown = 0;
    AdDiagnosticSink* m_former;
};

#endif
