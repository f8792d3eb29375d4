#include "tool/html/run_summary.h"

#include <utility>

namespace tool {

namespace {

LoadTotals TotalsSince(const LoadTotals& now, const LoadTotals& before) {
    LoadTotals difference;
    difference.read = now.read - before.read;
    difference.created = now.created - before.created;
    difference.updated = now.updated - before.updated;
    difference.rejected = now.rejected - before.rejected;
    difference.skipped = now.skipped - before.skipped;
    difference.history = now.history - before.history;
    difference.attachments = now.attachments - before.attachments;
    difference.duplicates = now.duplicates - before.duplicates;
    difference.waited = now.waited - before.waited;
    return difference;
}

// Records that have waited are done while another type is read.
bool HasAny(const LoadTotals& totals) {
    return totals.read > 0 || totals.created > 0 || totals.updated > 0 || totals.rejected > 0 ||
           totals.skipped > 0 || totals.history > 0 || totals.attachments > 0 ||
           totals.duplicates > 0 || totals.waited > 0;
}

}  // namespace

void RunSummary::StartType(const std::string& type, ImportedData data, const LoadTotals& soFar) {
    CloseType(soFar);
    m_type = type;
    m_data = data;
}

void RunSummary::CloseType(const LoadTotals& soFar) {
    const LoadTotals done = TotalsSince(soFar, std::exchange(m_typeStart, soFar));
    if (HasAny(done)) {
        m_types.Add(m_type, m_data, done);
    }
}

void RunSummary::AddReject(const RejectedRecord& record) {
    m_causes.Add(record.reason, {record.source,
                                 record.number,
                                 record.line,
                                 record.sourceId,
                                 {{"", record.reason}},
                                 record.unit});
}

void RunSummary::AddLoss(const Loss& loss) {
    m_losses[loss.kind].Add(
        {loss.source, loss.record, loss.line, loss.sourceId, {{loss.field, loss.text}}, loss.unit});
}

void RunSummary::Advance(double seconds, std::uint64_t read) {
    m_rate.Add(seconds, Handled(read));
}

void RunSummary::Finish(const LoadTotals& totals) {
    CloseType(totals);
    m_totals = totals;
    m_rate.Finish(totals.seconds, Handled(totals.read));
    for (auto& [kind, group] : m_losses) {
        group.title = LossKindTitle(kind);
    }
}

std::uint64_t RunSummary::LossCount() const {
    std::uint64_t count = 0;
    for (const auto& [kind, group] : m_losses) {
        count += group.count;
    }
    return count;
}

double RunSummary::AverageRate() const {
    return m_totals.seconds > 0 ? static_cast<double>(Handled(m_totals.read)) / m_totals.seconds
                                : 0;
}

}  // namespace tool
