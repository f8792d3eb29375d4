#include "recorddb/store/duplicate_table.h"

#include <chrono>
#include <ctime>
#include <string>
#include <unordered_set>

namespace recorddb {

namespace {

std::string NowUtc() {
    const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
    std::tm parts{};
    gmtime_r(&now, &parts);
    constexpr std::size_t room = 20;
    std::string text(room, '\0');
    text.resize(std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &parts));
    return text;
}

}  // namespace

std::optional<std::int64_t> DuplicateTable::OriginalOf(std::int64_t recordType,
                                                       std::int64_t record) {
    if (const auto pending = m_batch.Pending().FindOriginal({recordType, record})) {
        return pending;
    }
    m_batch.NoteRead({recordType, record});
    if (const auto* const answer = m_batch.Answers().FindOriginal({recordType, record})) {
        return *answer;
    }
    sql::Statement& find = m_connection.Prepare(
        "SELECT original FROM zt_duplicate WHERE record_type = $1 AND duplicate = $2");
    find.BindAll(recordType, record);
    return sql::QueryInt(find);
}

std::vector<std::int64_t> DuplicateTable::DuplicatesOf(std::int64_t recordType,
                                                       std::int64_t record) {
    m_batch.Apply(WriteBatch::For::Reading);
    m_batch.NoteUnclearRead();
    sql::Statement& find = m_connection.Prepare(
        "SELECT duplicate FROM zt_duplicate WHERE record_type = $1 AND original = $2 "
        "ORDER BY duplicate");
    const sql::ResetGuard guard(find);
    find.BindAll(recordType, record);
    std::vector<std::int64_t> duplicates;
    while (find.Step()) {
        duplicates.push_back(find.Int(0));
    }
    return duplicates;
}

bool DuplicateTable::LeadsTo(std::int64_t recordType, std::int64_t record, std::int64_t other) {
    // Notes what was seen, since links that another program made may go round in a circle.
    std::unordered_set<std::int64_t> seen;
    std::optional<std::int64_t> current = record;
    while (current && *current != other && seen.insert(*current).second) {
        current = OriginalOf(recordType, *current);
    }
    return current == other;
}

void DuplicateTable::Link(std::int64_t recordType, std::int64_t duplicate, std::int64_t original) {
    std::string now = NowUtc();
    if (m_batch.IsGathering()) {
        m_batch.PutLink({recordType, duplicate}, {original, std::move(now)});
        return;
    }
    sql::Statement& link = m_connection.Prepare(
        "INSERT INTO zt_duplicate (record_type, duplicate, original, action_time) "
        "VALUES ($1, $2, $3, $4) ON CONFLICT (record_type, duplicate) DO UPDATE SET "
        "original = excluded.original, action_time = excluded.action_time");
    link.BindAll(recordType, duplicate, original, now);
    link.Execute();
}

}  // namespace recorddb
