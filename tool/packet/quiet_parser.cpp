#include "tool/packet/quiet_parser.h"

#include "platform/messages/addiagnostic.h"

namespace tool {

QuietParser::TraceOff::TraceOff() : m_wasOn(AdDiagnostic::FlagSet(AdDiagnostic::kImportFlag)) {
    if (m_wasOn) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, false);
    }
}

QuietParser::TraceOff::~TraceOff() {
    if (m_wasOn) {
        AdDiagnostic::SetFlag(AdDiagnostic::kImportFlag, true);
    }
}

}  // namespace tool
