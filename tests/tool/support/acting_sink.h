#ifndef TESTS_TOOL_ACTING_SINK_H
#define TESTS_TOOL_ACTING_SINK_H

#include <cstddef>
#include <functional>
#include <utility>

#include "platform/messages/addiagnostic.h"

namespace tool {

// Does `action` when the importer has done so many records, and not again.
class ActingSink : public AdDiagnosticSink {
  public:
    ActingSink(std::size_t records, std::function<void()> action)
        : m_left(records), m_action(std::move(action)), m_former(AdDiagnostic::SetSink(this)) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    }
    ~ActingSink() override {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
        AdDiagnostic::SetSink(m_former);
    }
    ActingSink(const ActingSink&) = delete;
    ActingSink& operator=(const ActingSink&) = delete;

    bool Wants(int /*flag*/) override { return m_left > 0; }
    void Write(const Obx_String& /*tag*/, const Obx_String& text) override {
        if (text == u"ImportRecord ends" && m_left > 0 && --m_left == 0) {
            m_action();
        }
    }

  private:
    std::size_t m_left;
    std::function<void()> m_action;
    AdDiagnosticSink* m_former;
};

}  // namespace tool

#endif
