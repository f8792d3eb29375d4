#include "tool/report/load_report.h"

#include <fmt/format.h>

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tool/report/finding_json.h"
#include "tool/report/json_text.h"

namespace tool {

namespace {

constexpr std::size_t kRejectsList = 0;
constexpr std::size_t kLossesList = 1;
constexpr std::size_t kFindingsList = 2;

// Left out when there is none, as in most loads.
std::string UnlessNone(std::string_view name, std::uint64_t number) {
    return number == 0 ? std::string() : fmt::format(",\"{}\":{}", name, number);
}

// In a member of their own, as the time is, since these numbers differ from run to run.
std::string WorkersAsJson(const LoadTotals& totals) {
    return totals.workers == 0 ? std::string()
                               : fmt::format(R"(,"workers":{{"count":{},"ahead":{},"in_turn":{}}})",
                                             totals.workers, totals.ahead, totals.inTurn);
}

// As the members of a JSON object, without its braces: "\"read\":1,...".
std::string TotalsAsJson(const LoadTotals& totals) {
    return fmt::format(
        R"("read":{},"created":{},"updated":{},"rejected":{},"skipped":{},"history":{},)"
        R"("attachments":{},"duplicates":{},"seconds":{:.3f}{}{}{})",
        totals.read, totals.created, totals.updated, totals.rejected, totals.skipped,
        totals.history, totals.attachments, totals.duplicates, totals.seconds,
        UnlessNone("waited", totals.waited), UnlessNone("retried", totals.retried),
        WorkersAsJson(totals));
}

}  // namespace

void LoadReport::Finds(const MapFinding& finding) {
    m_hasFindings = true;
    m_lists.AddItem(FindingAsJson(finding), kFindingsList);
}

void LoadReport::Rejects(const RejectedRecord& record) {
    m_lists.AddItem(JsonText(WithUnit({{"file", record.source},
                                       {"record", record.number},
                                       {"source_id", record.sourceId},
                                       {"error", record.reason}},
                                      record.unit)),
                    kRejectsList);
}

void LoadReport::Loses(const Loss& loss) {
    if (IsToldByEveryLoad(loss.kind)) {
        List(loss);
    }
}

void LoadReport::List(const Loss& loss) {
    m_lists.AddItem(JsonText(WithUnit({{"kind", LossKindName(loss.kind)},
                                       {"file", loss.source},
                                       {"record", loss.record},
                                       {"line", loss.line},
                                       {"source_id", loss.sourceId},
                                       {"field", loss.field},
                                       {"text", loss.text}},
                                      loss.unit)),
                    kLossesList);
}

void LoadReport::Finish(const LoadTotals& totals) {
    m_lists.Finish(fmt::format("{{{},\"rejects\":[", TotalsAsJson(totals)), "]}\n",
                   {fmt::format("],\"{}\":[", m_lossesName), FindingsOpening(m_hasFindings)});
}

}  // namespace tool
