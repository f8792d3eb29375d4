#include "recorddb/store/history_table.h"

#include <optional>
#include <utility>

namespace recorddb {

namespace {

std::optional<std::string_view> NullIfEmpty(std::string_view text) {
    return text.empty() ? std::nullopt : std::optional(text);
}

}  // namespace

void HistoryTable::Insert(const HistoryEntry& entry, std::string_view field) {
    if (m_insert == nullptr) {
        m_insert = &m_connection.Prepare(
            "INSERT INTO zt_history (record_type, record, entry, field, action_time, expiry_time, "
            "user_name, action_name, old_state, new_state, comments) "
            "VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11)");
    }
    m_insert->BindAll(entry.recordType, entry.record, entry.entry, field, entry.actionTime,
                      NullIfEmpty(entry.expiryTime), entry.userName, entry.actionName,
                      entry.oldState, entry.newState, entry.comments);
    m_insert->Execute();
}

void HistoryTable::Save(const RecordKey& record, std::string_view field,
                        std::span<const HistoryEntry> added,
                        const std::vector<HistoryTimes>& before, std::vector<HistoryTimes> after) {
    if (m_batch.IsGathering()) {
        m_batch.PutHistory(record, field, added, before, std::move(after));
        return;
    }
    for (const HistoryEntry& entry : added) {
        Insert(entry, field);
    }
    for (const HistoryTimes& changed : ChangedTimes(before, after)) {
        SetExpiry(record, changed);
    }
}

std::vector<HistoryTimes> HistoryTable::Times(std::int64_t recordType, std::int64_t record) {
    if (const auto* const pending = m_batch.Pending().FindTimes({recordType, record})) {
        return *pending;
    }
    // A new record has none. Should rows of an earlier record with this dbid be left over, writing
    // the new ones fails.
    if (m_batch.Pending().HasNew(m_batch.GetSchema().Type(recordType), record)) {
        return {};
    }
    m_batch.NoteRead({recordType, record});
    if (const auto* const answer = m_batch.Answers().FindTimes({recordType, record})) {
        return *answer;
    }
    if (m_times == nullptr) {
        m_times = &m_connection.Prepare(
            "SELECT entry, action_time, expiry_time FROM zt_history "
            "WHERE record_type = $1 AND record = $2");
    }
    const sql::ResetGuard guard(*m_times);
    m_times->BindAll(recordType, record);
    std::vector<HistoryTimes> times;
    while (m_times->Step()) {
        times.push_back({.entry = m_times->Int(0),
                         .actionTime = std::string(m_times->Text(1)),
                         .expiryTime = std::string(m_times->Text(2))});
    }
    return times;
}

void HistoryTable::SetExpiry(const RecordKey& record, const HistoryTimes& times) {
    if (m_setExpiry == nullptr) {
        m_setExpiry = &m_connection.Prepare(
            "UPDATE zt_history SET expiry_time = $4 "
            "WHERE record_type = $1 AND record = $2 AND entry = $3");
    }
    m_setExpiry->BindAll(record.first, record.second, times.entry, NullIfEmpty(times.expiryTime));
    m_setExpiry->Execute();
}

std::vector<HistoryEntry> HistoryTable::Load(std::int64_t recordType, std::int64_t record) {
    m_batch.Apply(WriteBatch::For::Reading);
    m_batch.NoteRead({recordType, record});
    if (const auto* const answer = m_batch.Answers().FindEntries({recordType, record})) {
        return *answer;
    }
    sql::Statement& load = m_connection.Prepare(
        "SELECT entry, action_time, expiry_time, user_name, action_name, old_state, new_state, "
        "comments FROM zt_history WHERE record_type = $1 AND record = $2 "
        "ORDER BY action_time, entry");
    const sql::ResetGuard guard(load);
    load.BindAll(recordType, record);
    std::vector<HistoryEntry> entries;
    while (load.Step()) {
        entries.push_back({.recordType = recordType,
                           .record = record,
                           .entry = load.Int(0),
                           .actionTime = std::string(load.Text(1)),
                           .expiryTime = std::string(load.Text(2)),
                           .userName = std::string(load.Text(3)),
                           .actionName = std::string(load.Text(4)),
                           .oldState = std::string(load.Text(5)),
                           .newState = std::string(load.Text(6)),
                           .comments = std::string(load.Text(7))});
    }
    return entries;
}

}  // namespace recorddb
