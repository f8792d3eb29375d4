#include "tool/report/verify_report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <string>

#include "tool/report/finding_json.h"
#include "tool/report/json_text.h"

namespace tool {

namespace {

using nlohmann::ordered_json;

// The lists of the report.
constexpr std::size_t kDifferences = 0;
constexpr std::size_t kFaults = 1;
constexpr std::size_t kFindings = 2;

ordered_json ToJson(const VerifiedType& type) {
    return {{"type", type.name},
            {"compared", type.compared},
            {"equal", type.equal},
            {"different", type.different},
            {"missing", type.missing},
            {"extra", type.extra},
            {"fields", type.fields},
            {"references", type.references},
            {"history", type.history},
            {"attachments", type.attachments},
            {"duplicates", type.duplicates}};
}

}  // namespace

void VerifyReport::Finds(const MapFinding& finding) {
    m_hasFindings = true;
    m_lists.AddItem(FindingAsJson(finding), kFindings);
}

void VerifyReport::Differs(const Difference& difference) {
    m_lists.AddItem(JsonText(WithUnit({{"file", difference.source},
                                       {"record", difference.record},
                                       {"line", difference.line},
                                       {"source_id", difference.sourceId},
                                       {"type", difference.type},
                                       {"id", difference.id},
                                       {"field", difference.field},
                                       {"source", difference.sourceValue},
                                       {"database", difference.databaseValue},
                                       {"problem", difference.problem}},
                                      difference.unit)),
                    kDifferences);
}

void VerifyReport::IsFaulty(const recorddb::Fault& fault) {
    m_lists.AddItem(JsonText({{"type", fault.type},
                              {"id", fault.id},
                              {"field", fault.field},
                              {"database", fault.value},
                              {"problem", fault.problem}}),
                    kFaults);
}

void VerifyReport::Finish(const VerifySummary& summary) {
    ordered_json types = ordered_json::array();
    for (const VerifiedType& type : summary.types) {
        types.push_back(ToJson(type));
    }
    m_lists.Finish(
        fmt::format(R"({{"read":{},"compared":{},"differing":{},"missing":{},"extra":{},)"
                    R"("seconds":{:.3f},"types":{},"differences":[)",
                    summary.read, summary.compared, summary.differing, summary.missing,
                    summary.extra, summary.seconds, JsonText(types)),
        "]}\n", {"],\"faults\":[", FindingsOpening(m_hasFindings)});
}

}  // namespace tool
