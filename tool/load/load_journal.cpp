#include "tool/load/load_journal.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/text/number_text.h"

namespace tool {

namespace {

using recorddb::journal::JournalEntry;

// Whichever runs wrote them.
bool IsSameWork(JournalEntry a, const JournalEntry& b) {
    a.run = b.run;
    return a == b;
}

}  // namespace

TakenUpByAnotherLoad::TakenUpByAnotherLoad(const std::string& sourceName)
    : Error(recorddb::sql::ErrorKind::Busy,
            "another load of " + sourceName + " is under way or has just ended", "") {}

LoadJournal::LoadJournal(recorddb::journal::Journal& journal, recorddb::journal::JournalKey key,
                         std::string sourceName, bool fresh, bool retry)
    : m_journal(journal),
      m_key(std::move(key)),
      m_sourceName(std::move(sourceName)),
      m_mayRetry(retry && !fresh),
      m_forget(fresh) {
    if (const auto found = journal.Find(m_key)) {
        TakeAsFound(*found);
    }
    m_entry.sourceName = m_sourceName;
    m_kept = m_entry;
}

void LoadJournal::TakeAsFound(const JournalEntry& entry) {
    m_stored = entry;
    if (m_forget) {
        return;
    }
    m_entry = entry;
    m_entry.sourceName = m_sourceName;
    m_kept = m_entry;
    m_wasComplete = entry.complete;
    m_handledBefore = static_cast<std::uint64_t>(entry.nextOrdinal);
    m_rejectedBefore = static_cast<std::uint64_t>(entry.rejected);
    m_retry.clear();
    if (m_mayRetry && m_wasComplete) {
        for (const std::int64_t ordinal : m_journal.Rejects(m_key)) {
            m_retry.insert(static_cast<std::uint64_t>(ordinal));
        }
    }
}

void LoadJournal::Begin() {
    const JournalEntry entry = m_journal.BeginRun(m_key, m_sourceName);
    m_run = entry.run;
    m_keptRun = m_run;
    TakeAsFound(entry);
}

LoadJournal::Outcome LoadJournal::BeginAgain() {
    const JournalEntry entry = m_journal.BeginRun(m_key, m_sourceName);
    m_run = entry.run;
    if (m_saved && IsSameWork(entry, *m_saved)) {
        return Outcome::Kept;
    }
    if (m_stored && !m_forget && entry.nextOrdinal < m_stored->nextOrdinal) {
        throw recorddb::sql::Error(
            recorddb::sql::ErrorKind::Other,
            fmt::format("{}: {} of it were written, and the server that answers now has {} only; "
                        "start the same command again: it goes on from there",
                        m_sourceName,
                        CountOf(static_cast<std::uint64_t>(m_stored->nextOrdinal), "record"),
                        entry.nextOrdinal),
            "");
    }
    if (!IsStored(entry)) {
        throw TakenUpByAnotherLoad(m_sourceName);
    }
    m_keptRun = m_run;
    return Outcome::Undone;
}

bool LoadJournal::IsStored(const JournalEntry& entry) const {
    return IsSameWork(entry, m_stored ? *m_stored : JournalEntry{.sourceName = m_sourceName});
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
    if (m_run == 0) {
        const JournalEntry entry = m_journal.BeginRun(m_key, m_sourceName);
        if (!IsStored(entry)) {
            throw TakenUpByAnotherLoad(m_sourceName);
        }
        m_run = entry.run;
    }
    if (m_forget) {
        m_journal.ForgetRejects(m_key);
    }
    for (const auto& key : m_forgotten) {
        m_journal.Forget(key);
    }
    m_entry.run = m_run;
    if (!m_journal.Save(m_key, m_entry)) {
        throw TakenUpByAnotherLoad(m_sourceName);
    }
    m_saved = m_entry;
    for (const std::int64_t ordinal : m_newRejects) {
        m_journal.AddReject(m_key, ordinal);
    }
    for (const std::int64_t ordinal : m_mended) {
        m_journal.RemoveReject(m_key, ordinal);
    }
}

void LoadJournal::Keep() {
    m_forget = false;
    m_forgotten.clear();
    m_stored = m_saved;
    m_kept = m_entry;
    m_keptRun = m_run;
    m_saved.reset();
    m_newRejects.clear();
    m_mended.clear();
}

void LoadJournal::Undo() {
    m_entry = m_kept;
    m_run = m_keptRun;
    m_saved.reset();
    m_newRejects.clear();
    m_mended.clear();
}

}  // namespace tool
