#include "recorddb/journal.h"

#include "recorddb/sql.h"

namespace recorddb::journal {

Journal::Journal(sql::Connection& connection) : m_connection(connection) {}

std::optional<JournalEntry> Journal::Find(const JournalKey& key) {
    sql::Statement& find = m_connection.Prepare(
        "SELECT source_name, next_ordinal, complete, created, updated, history, attachments, "
        "duplicates, rejected, skipped FROM zt_journal "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    const sql::ResetGuard guard(find);
    find.BindAll(key.sourceSha256, key.configurationSha256);
    if (!find.Step()) {
        return std::nullopt;
    }
    return JournalEntry{
        .sourceName = std::string(find.Text(0)),
        .nextOrdinal = find.Int(1),
        .complete = find.Int(2) != 0,
        .created = find.Int(3),
        .updated = find.Int(4),
        .history = find.Int(5),
        .attachments = find.Int(6),
        .duplicates = find.Int(7),
        .rejected = find.Int(8),
        .skipped = find.Int(9),
    };
}

std::vector<JournalKey> Journal::Unfinished() {
    sql::Statement& list = m_connection.Prepare(
        "SELECT source_sha256, configuration_sha256 FROM zt_journal WHERE complete = 0 "
        "ORDER BY source_sha256, configuration_sha256");
    const sql::ResetGuard guard(list);
    std::vector<JournalKey> keys;
    while (list.Step()) {
        keys.push_back({std::string(list.Text(0)), std::string(list.Text(1))});
    }
    return keys;
}

void Journal::Save(const JournalKey& key, const JournalEntry& entry) {
    sql::Statement& save = m_connection.Prepare(
        "INSERT INTO zt_journal (source_sha256, configuration_sha256, source_name, next_ordinal, "
        "complete, created, updated, history, attachments, duplicates, rejected, skipped) "
        "VALUES ($1, $2, $3, $4, $5, $6, $7, $8, $9, $10, $11, $12) "
        "ON CONFLICT (source_sha256, configuration_sha256) DO UPDATE SET "
        "source_name = excluded.source_name, next_ordinal = excluded.next_ordinal, "
        "complete = excluded.complete, created = excluded.created, updated = excluded.updated, "
        "history = excluded.history, attachments = excluded.attachments, "
        "duplicates = excluded.duplicates, rejected = excluded.rejected, "
        "skipped = excluded.skipped");
    save.BindAll(key.sourceSha256, key.configurationSha256, entry.sourceName, entry.nextOrdinal,
                 entry.complete, entry.created, entry.updated, entry.history, entry.attachments,
                 entry.duplicates, entry.rejected, entry.skipped);
    save.Execute();
}

void Journal::Forget(const JournalKey& key) {
    for (const char* const sql :
         {"DELETE FROM zt_journal_reject WHERE source_sha256 = $1 AND configuration_sha256 = $2",
          "DELETE FROM zt_journal WHERE source_sha256 = $1 AND configuration_sha256 = $2"}) {
        sql::Statement& remove = m_connection.Prepare(sql);
        remove.BindAll(key.sourceSha256, key.configurationSha256);
        remove.Execute();
    }
}

void Journal::AddReject(const JournalKey& key, std::int64_t ordinal) {
    sql::Statement& add = m_connection.Prepare(
        "INSERT INTO zt_journal_reject (source_sha256, configuration_sha256, ordinal) "
        "VALUES ($1, $2, $3) ON CONFLICT DO NOTHING");
    add.BindAll(key.sourceSha256, key.configurationSha256, ordinal);
    add.Execute();
}

void Journal::RemoveReject(const JournalKey& key, std::int64_t ordinal) {
    sql::Statement& remove = m_connection.Prepare(
        "DELETE FROM zt_journal_reject "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2 AND ordinal = $3");
    remove.BindAll(key.sourceSha256, key.configurationSha256, ordinal);
    remove.Execute();
}

std::vector<std::int64_t> Journal::Rejects(const JournalKey& key) {
    sql::Statement& list = m_connection.Prepare(
        "SELECT ordinal FROM zt_journal_reject "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2 ORDER BY ordinal");
    const sql::ResetGuard guard(list);
    list.BindAll(key.sourceSha256, key.configurationSha256);
    std::vector<std::int64_t> ordinals;
    while (list.Step()) {
        ordinals.push_back(list.Int(0));
    }
    return ordinals;
}

}  // namespace recorddb::journal
