#include "tool/load/records/record_rejecter.h"

#include <fmt/format.h>

#include "tool/load/records/source_id.h"

namespace tool {

void RecordRejecter::Reject(const SourceRecord& record, const Rejection& rejection) {
    RejectedRecord rejected;
    rejected.place = rejection.place;
    rejected.source = std::string(record.source);
    rejected.unit = record.unit;
    rejected.number = record.Number();
    rejected.line = record.line;
    if (record.rows != nullptr) {
        rejected.rows = *record.rows;
    }
    const std::string missing = m_missing.Describe(rejection.missing);
    rejected.reason = missing.empty() ? rejection.reason : rejection.reason + " " + missing;
    rejected.raw = record.raw;
    rejected.defect = record.defect;
    rejected.guarded = record.guarded;
    rejected.openSection = record.openSection;
    rejected.sourceId = SourceIdOf(record, rejection.configuration);
    rejected.configuration = rejection.isInForce ? nullptr : &rejection.configuration;
    m_sinks.Reject(rejected);
    m_missing.NoteRejected(
        rejection.configuration, rejected.sourceId,
        fmt::format("{}, {} {}", rejected.source, rejected.unit, rejected.number));
}

}  // namespace tool
