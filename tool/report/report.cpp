#include "tool/report/report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

#include "tool/report/json_text.h"

namespace tool {

namespace {

constexpr std::size_t rejectsList = 0;
constexpr std::size_t lossesList = 1;

}  // namespace

std::string TotalsAsJson(const LoadTotals& totals) {
    return fmt::format(
        R"("read":{},"created":{},"updated":{},"rejected":{},"skipped":{},"history":{},)"
        R"("attachments":{},"duplicates":{},"seconds":{:.3f})",
        totals.read, totals.created, totals.updated, totals.rejected, totals.skipped,
        totals.history, totals.attachments, totals.duplicates, totals.seconds);
}

ReportWriter::ReportWriter(const std::filesystem::path& path, Lists lists)
    : m_which(lists), m_lists(path, lists == Lists::Rejects ? 1 : 2) {}

void ReportWriter::AddReject(const ReportedReject& reject) {
    m_lists.AddItem(JsonText({{"file", reject.file},
                              {"record", reject.record},
                              {"source_id", reject.sourceId},
                              {"error", reject.error}}),
                    rejectsList);
}

void ReportWriter::AddLoss(const Loss& loss) {
    m_lists.AddItem(JsonText({{"kind", LossKindName(loss.kind)},
                              {"file", loss.source},
                              {"record", loss.record},
                              {"line", loss.line},
                              {"source_id", loss.sourceId},
                              {"field", loss.field},
                              {"text", loss.text}}),
                    lossesList);
}

void ReportWriter::Finish(const LoadTotals& totals) {
    const std::string head = fmt::format("{{{},\"rejects\":[", TotalsAsJson(totals));
    if (m_which == Lists::Rejects) {
        m_lists.Finish(head, "]}\n");
    } else {
        m_lists.Finish(head, "]}\n", {"],\"losses\":["});
    }
}

}  // namespace tool
