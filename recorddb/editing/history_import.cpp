#include "recorddb/editing/history_import.h"

#include <algorithm>
#include <span>
#include <string>
#include <tuple>
#include <utility>

#include "platform/foundation/utf.h"
#include "platform/messages/message_ids.h"
#include "recorddb/editing/history_reading.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/store/atomic_write.h"
#include "recorddb/store/tables/next_number.h"

namespace recorddb {

namespace {

bool SameRecord(const HistoryEntry& a, const HistoryEntry& b) {
    return a.recordType == b.recordType && a.record == b.record;
}

}  // namespace

PaMessage HistoryImport::Add(const AdHistory& given, long number) {
    if (m_pending.size() == m_pendingCount) {
        m_pending.emplace_back();
    }
    HistoryEntry& entry = m_pending[m_pendingCount];
    PaMessage problem = ReadHistoryEntry(given, number, entry);
    if (problem.ID() != 0) {
        return problem;
    }
    problem = CheckType(given, number);
    // A record that has just been found need not be looked for again.
    const bool found = m_pendingCount != 0 && SameRecord(m_pending[m_pendingCount - 1], entry);
    if (problem.ID() == 0 && !found) {
        problem = CheckRecord(given, number);
    }
    m_pendingCount += problem.ID() == 0 ? 1 : 0;
    return problem;
}

PaMessage HistoryImport::CheckType(const AdHistory& given, long number) const {
    const std::string name = Utf16ToUtf8Lossy(given.recordTypeName);
    const schema::RecordType* const type = m_schema.FindType(name);
    if (type == nullptr || type->id != given.recordTypeId) {
        return ErrorMessage(message_id::kHistoryOtherType,
                            {{u"_linenum_", std::to_string(number)},
                             {u"_datatype_", name},
                             {u"_value_", std::to_string(given.recordTypeId)}});
    }
    if (type->HistoryField() == nullptr) {
        return ErrorMessage(message_id::kHistoryNoField,
                            {{u"_linenum_", std::to_string(number)}, {u"_datatype_", type->name}});
    }
    return {};
}

PaMessage HistoryImport::CheckRecord(const AdHistory& given, long number) {
    const schema::RecordType& type = m_schema.Type(given.recordTypeId);
    if (m_tables.Records(type).Version(given.recordId)) {
        return {};
    }
    return ErrorMessage(message_id::kHistoryNoRecord,
                        {{u"_linenum_", std::to_string(number)},
                         {u"_datatype_", type.name},
                         {u"_value_", std::to_string(given.recordId)}});
}

void HistoryImport::DropPending(std::size_t keep) noexcept {
    m_pendingCount = std::min(m_pendingCount, keep);
}

std::int64_t HistoryImport::Commit() {
    const auto count = static_cast<std::int64_t>(m_pendingCount);
    if (count == 0) {
        return 0;
    }
    const auto end = m_pending.begin() + count;
    const auto isBefore = [](const HistoryEntry& a, const HistoryEntry& b) {
        return std::tie(a.recordType, a.record) < std::tie(b.recordType, b.record);
    };
    // Mostly all of them belong to one record.
    if (!std::is_sorted(m_pending.begin(), end, isBefore)) {
        std::stable_sort(m_pending.begin(), end, isBefore);
    }
    // There is no constraint that an entry could break.
    AtomicWrite write(m_connection, AtomicWrite::Refusable::None);
    for (std::size_t first = 0; first < m_pendingCount;) {
        std::size_t next = first + 1;
        while (next < m_pendingCount && SameRecord(m_pending[first], m_pending[next])) {
            ++next;
        }
        WriteRecord(first, next);
        first = next;
    }
    write.Keep();
    m_pendingCount = 0;
    return count;
}

// Writes the pending entries from `first` up to `end`, which all belong to one record.
void HistoryImport::WriteRecord(std::size_t first, std::size_t end) {
    const std::int64_t type = m_pending[first].recordType;
    const std::int64_t record = m_pending[first].record;
    const std::vector<HistoryTimes> before = m_table.Times(type, record);
    std::int64_t last = 0;
    for (const HistoryTimes& times : before) {
        last = std::max(last, times.entry);
    }
    const std::int64_t next =
        NextNumber(last, "zt_history.entry", static_cast<std::int64_t>(end - first));
    std::vector<HistoryTimes> all;
    all.reserve(before.size() + (end - first));
    all = before;
    for (std::size_t i = first; i < end; ++i) {
        const auto number = next + static_cast<std::int64_t>(i - first);
        m_pending[i].entry = number;
        all.push_back({.entry = number,
                       .actionTime = m_pending[i].actionTime,
                       .expiryTime = m_pending[i].expiryTime});
    }
    WorkOutExpiry(all);
    for (const HistoryTimes& times : all) {
        if (times.entry > last) {
            m_pending[first + static_cast<std::size_t>(times.entry - next)].expiryTime =
                times.expiryTime;
        }
    }
    const std::string& field = m_schema.Type(type).HistoryField()->name;
    m_table.Save({type, record}, field, std::span(m_pending).subspan(first, end - first), before,
                 std::move(all));
    m_upToDate = Now(type, record);
}

HistoryImport::UpToDate HistoryImport::Now(std::int64_t recordType, std::int64_t record) const {
    return {.recordType = recordType,
            .record = record,
            .transactionCount = m_connection.TransactionCount(),
            .undoCount = m_batch.UndoCount()};
}

void HistoryImport::UpdateExpiry(const schema::RecordType& type, std::int64_t record) {
    // What Commit has just written is up to date as long as nobody else could write.
    if (m_connection.InTransaction() && m_upToDate == Now(type.id, record)) {
        return;
    }
    AtomicWrite write(m_connection, AtomicWrite::Refusable::None);
    const std::vector<HistoryTimes> before = m_table.Times(type.id, record);
    std::vector<HistoryTimes> after = before;
    WorkOutExpiry(after);
    m_table.Save({type.id, record}, {}, {}, before, std::move(after));
    write.Keep();
}

}  // namespace recorddb
