#include "recorddb/journal.h"

#include <fmt/format.h>

#include <string_view>

#include "recorddb/errors.h"
#include "recorddb/sql.h"

namespace recorddb::journal {

namespace {

std::string_view TableOf(Journal::Mark mark) {
    return mark == Journal::Mark::Rejected ? "zt_journal_reject" : "zt_journal_waiting";
}

JournalEntry EntryIn(const sql::Statement& row) {
    return {
        .sourceName = std::string(row.Text(0)),
        .nextOrdinal = row.Int(1),
        .complete = row.Int(2) != 0,
        .created = row.Int(3),
        .updated = row.Int(4),
        .history = row.Int(5),
        .attachments = row.Int(6),
        .duplicates = row.Int(7),
        .rejected = row.Int(8),
        .skipped = row.Int(9),
        .run = row.Int(10),
    };
}

}  // namespace

Journal::Journal(sql::Connection& connection) : m_connection(connection) {}

std::optional<JournalEntry> Journal::Find(const JournalKey& key) {
    sql::Statement& find = m_connection.Prepare(
        "SELECT source_name, next_ordinal, complete, created, updated, history, attachments, "
        "duplicates, rejected, skipped, run FROM zt_journal "
        "WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    const sql::ResetGuard guard(find);
    find.BindAll(key.sourceSha256, key.configurationSha256);
    if (!find.Step()) {
        return std::nullopt;
    }
    return EntryIn(find);
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

JournalEntry Journal::BeginRun(const JournalKey& key, const std::string& sourceName) {
    sql::Statement& begin = m_connection.Prepare(
        "INSERT INTO zt_journal (source_sha256, configuration_sha256, source_name, next_ordinal, "
        "complete, created, updated, history, attachments, duplicates, rejected, skipped, run) "
        "VALUES ($1, $2, $3, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1) "
        "ON CONFLICT (source_sha256, configuration_sha256) DO UPDATE SET run = zt_journal.run + 1 "
        "WHERE zt_journal.run < 9223372036854775807 "
        "RETURNING source_name, next_ordinal, complete, created, updated, history, attachments, "
        "duplicates, rejected, skipped, run");
    const sql::ResetGuard guard(begin);
    begin.BindAll(key.sourceSha256, key.configurationSha256, sourceName);
    if (!begin.Step()) {
        throw sql::Error(sql::ErrorKind::Corrupt,
                         "zt_journal.run holds the highest number that there is", "");
    }
    JournalEntry entry = EntryIn(begin);
    // To the end, as every statement that changes something.
    begin.Step();
    return entry;
}

bool Journal::Save(const JournalKey& key, const JournalEntry& entry) {
    sql::Statement& save = m_connection.Prepare(
        "UPDATE zt_journal SET source_name = $3, next_ordinal = $4, complete = $5, created = $6, "
        "updated = $7, history = $8, attachments = $9, duplicates = $10, rejected = $11, "
        "skipped = $12 WHERE source_sha256 = $1 AND configuration_sha256 = $2 AND run = $13");
    save.BindAll(key.sourceSha256, key.configurationSha256, entry.sourceName, entry.nextOrdinal,
                 entry.complete, entry.created, entry.updated, entry.history, entry.attachments,
                 entry.duplicates, entry.rejected, entry.skipped, entry.run);
    return save.Execute() == 1;
}

void Journal::Forget(const JournalKey& key) {
    ForgetMarks(key);
    sql::Statement& remove = m_connection.Prepare(
        "DELETE FROM zt_journal WHERE source_sha256 = $1 AND configuration_sha256 = $2");
    remove.BindAll(key.sourceSha256, key.configurationSha256);
    remove.Execute();
}

void Journal::ForgetMarks(const JournalKey& key) {
    for (const Mark mark : {Mark::Rejected, Mark::Waiting}) {
        sql::Statement& remove = m_connection.Prepare(
            fmt::format("DELETE FROM {} WHERE source_sha256 = $1 AND configuration_sha256 = $2",
                        TableOf(mark)));
        remove.BindAll(key.sourceSha256, key.configurationSha256);
        remove.Execute();
    }
}

void Journal::Add(Mark mark, const JournalKey& key, std::span<const std::int64_t> ordinals) {
    sql::Statement& add = m_connection.Prepare(
        fmt::format("INSERT INTO {} (source_sha256, configuration_sha256, ordinal) "
                    "VALUES ($1, $2, $3) ON CONFLICT DO NOTHING",
                    TableOf(mark)));
    for (const std::int64_t ordinal : ordinals) {
        add.BindAll(key.sourceSha256, key.configurationSha256, ordinal);
        add.Execute();
    }
}

void Journal::Remove(Mark mark, const JournalKey& key, std::span<const std::int64_t> ordinals) {
    sql::Statement& remove = m_connection.Prepare(
        fmt::format("DELETE FROM {} "
                    "WHERE source_sha256 = $1 AND configuration_sha256 = $2 AND ordinal = $3",
                    TableOf(mark)));
    for (const std::int64_t ordinal : ordinals) {
        remove.BindAll(key.sourceSha256, key.configurationSha256, ordinal);
        remove.Execute();
    }
}

std::vector<std::int64_t> Journal::Marked(Mark mark, const JournalKey& key) {
    sql::Statement& list = m_connection.Prepare(
        fmt::format("SELECT ordinal FROM {} "
                    "WHERE source_sha256 = $1 AND configuration_sha256 = $2 ORDER BY ordinal",
                    TableOf(mark)));
    const sql::ResetGuard guard(list);
    list.BindAll(key.sourceSha256, key.configurationSha256);
    std::vector<std::int64_t> ordinals;
    while (list.Step()) {
        ordinals.push_back(list.Int(0));
    }
    return ordinals;
}

}  // namespace recorddb::journal
