#include "tool/load/load_journal.h"

#include <algorithm>
#include <utility>

#include "recorddb/errors.h"

namespace tool {

LoadJournal::LoadJournal(recorddb::journal::Journal& journal, recorddb::journal::JournalKey key,
                         std::string sourceName, bool fresh, bool retry)
    : m_journal(journal), m_key(std::move(key)), m_stored(journal.Find(m_key)), m_forget(fresh) {
    if (m_stored && !fresh) {
        m_entry = *m_stored;
        m_wasComplete = m_entry.complete;
        m_handledBefore = static_cast<std::uint64_t>(m_entry.nextOrdinal);
        m_rejectedBefore = static_cast<std::uint64_t>(m_entry.rejected);
        if (retry && m_wasComplete) {
            for (const std::int64_t ordinal : m_journal.Rejects(m_key)) {
                m_retry.insert(static_cast<std::uint64_t>(ordinal));
            }
        }
    }
    m_entry.sourceName = std::move(sourceName);
    m_saved = m_entry;
}

RecordTask LoadJournal::TaskOf(std::uint64_t ordinal) const {
    if (ordinal >= m_handledBefore) {
        return RecordTask::Import;
    }
    return m_retry.contains(ordinal) ? RecordTask::Retry : RecordTask::Pass;
}

void LoadJournal::NoteHandled(std::uint64_t ordinal) {
    m_entry.nextOrdinal = std::max(m_entry.nextOrdinal, static_cast<std::int64_t>(ordinal) + 1);
}

void LoadJournal::NoteImported(std::uint64_t ordinal, const LoadTotals& done) {
    NoteHandled(ordinal);
    if (TaskOf(ordinal) == RecordTask::Retry) {
        m_mended.push_back(static_cast<std::int64_t>(ordinal));
        --m_entry.rejected;
    }
    m_entry.created += static_cast<std::int64_t>(done.created);
    m_entry.updated += static_cast<std::int64_t>(done.updated);
    m_entry.history += static_cast<std::int64_t>(done.history);
    m_entry.attachments += static_cast<std::int64_t>(done.attachments);
    m_entry.duplicates += static_cast<std::int64_t>(done.duplicates);
    m_entry.skipped += static_cast<std::int64_t>(done.skipped);
}

void LoadJournal::NoteRejected(std::uint64_t ordinal) {
    NoteHandled(ordinal);
    if (TaskOf(ordinal) != RecordTask::Retry) {
        m_newRejects.push_back(static_cast<std::int64_t>(ordinal));
        ++m_entry.rejected;
    }
}

void LoadJournal::Save() {
    if (m_journal.Find(m_key) != m_stored) {
        throw recorddb::sql::Error(
            recorddb::sql::ErrorKind::Busy,
            "another load of " + m_entry.sourceName + " is under way or has just ended", "");
    }
    if (std::exchange(m_forget, false)) {
        m_journal.Forget(m_key);
    }
    for (const auto& key : std::exchange(m_forgotten, {})) {
        m_journal.Forget(key);
    }
    m_journal.Save(m_key, m_entry);
    m_stored = m_entry;
    m_saved = m_entry;
    for (const std::int64_t ordinal : m_newRejects) {
        m_journal.AddReject(m_key, ordinal);
    }
    for (const std::int64_t ordinal : m_mended) {
        m_journal.RemoveReject(m_key, ordinal);
    }
    m_newRejects.clear();
    m_mended.clear();
}

void LoadJournal::Undo() {
    m_entry = m_saved;
    m_newRejects.clear();
    m_mended.clear();
}

}  // namespace tool
