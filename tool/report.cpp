#include "tool/report.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>

namespace tool {

std::string TotalsAsJson(const LoadTotals& totals) {
    return fmt::format(
        R"("read":{},"created":{},"updated":{},"rejected":{},"skipped":{},"history":{},)"
        R"("attachments":{},"duplicates":{},"seconds":{:.3f})",
        totals.read, totals.created, totals.updated, totals.rejected, totals.skipped,
        totals.history, totals.attachments, totals.duplicates, totals.seconds);
}

void ReportWriter::AddReject(const ReportedReject& reject) {
    const nlohmann::ordered_json entry = {{"file", reject.file},
                                          {"record", reject.record},
                                          {"source_id", reject.sourceId},
                                          {"error", reject.error}};
    // Replaces what is not UTF-8 in a file name, say, where the default would throw.
    m_list.AddItem(entry.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
}

void ReportWriter::Finish(const LoadTotals& totals) {
    m_list.Finish(fmt::format("{{{},\"rejects\":[", TotalsAsJson(totals)), "]}\n");
}

}  // namespace tool
