#include "tool/load/record_rejecter.h"

#include <fmt/format.h>

namespace tool {

void RecordRejecter::Reject(const SourceRecord& record, const SourceWalk& walk,
                            const std::string& reason) {
    RejectedRecord rejected;
    rejected.source = std::string(record.source);
    rejected.unit = record.unit;
    rejected.number = record.Number();
    rejected.line = record.line;
    if (record.rows != nullptr) {
        rejected.rows = *record.rows;
    }
    const std::string missing = m_missing.Describe(record, walk.Configuration());
    rejected.reason = missing.empty() ? reason : reason + " " + missing;
    rejected.raw = record.raw;
    rejected.defect = record.defect;
    rejected.guarded = record.guarded;
    rejected.openSection = record.openSection;
    rejected.sourceId = walk.IdIn(record.raw);
    m_sinks.Reject(rejected);
    m_missing.NoteRejected(
        walk.Configuration(), rejected.sourceId,
        fmt::format("{}, {} {}", rejected.source, rejected.unit, rejected.number));
}

}  // namespace tool
