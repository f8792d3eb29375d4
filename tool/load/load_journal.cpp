#include "tool/load/load_journal.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "tool/text/number_text.h"

namespace tool {

namespace {

using recorddb::journal::Journal;
using recorddb::journal::JournalEntry;

// Compares two entries but for the runs that wrote them.
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
        for (const std::int64_t ordinal : m_journal.Marked(Journal::Mark::Rejected, m_key)) {
            m_retry.insert(static_cast<std::uint64_t>(ordinal));
        }
    }
    m_waitingBefore = m_journal.Marked(Journal::Mark::Waiting, m_key);
    m_waiting = static_cast<std::int64_t>(m_waitingBefore.size());
    m_keptWaiting = m_waiting;
    m_isReadToEnd = m_wasComplete;
    m_wasReadToEnd = m_wasComplete;
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
    m_keptRun = m_run;
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
    return Outcome::Undone;
}

bool LoadJournal::IsStored(const JournalEntry& entry) const {
    return IsSameWork(entry, m_stored ? *m_stored : JournalEntry{.sourceName = m_sourceName});
}

RecordTask LoadJournal::TaskOf(std::uint64_t ordinal) const {
    if (ordinal >= m_handledBefore) {
        return RecordTask::Import;
    }
    if (std::binary_search(m_waitingBefore.begin(), m_waitingBefore.end(),
                           static_cast<std::int64_t>(ordinal))) {
        return RecordTask::TakeUp;
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

// A record that was rejected stays marked as such while it waits.
void LoadJournal::NoteWaiting(std::uint64_t ordinal) {
    NoteHandled(ordinal);
    if (TaskOf(ordinal) == RecordTask::Import) {
        m_newWaiting.push_back(static_cast<std::int64_t>(ordinal));
        ++m_waiting;
    }
}

void LoadJournal::NoteWaitingEnds(std::uint64_t ordinal) {
    if (TaskOf(ordinal) == RecordTask::Retry) {
        return;
    }
    --m_waiting;
    if (std::erase(m_newWaiting, static_cast<std::int64_t>(ordinal)) == 0) {
        m_settled.push_back(static_cast<std::int64_t>(ordinal));
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
        m_journal.ForgetMarks(m_key);
    }
    for (const auto& key : m_forgotten) {
        m_journal.Forget(key);
    }
    m_entry.run = m_run;
    m_entry.complete = m_isReadToEnd && m_waiting == 0;
    if (!m_journal.Save(m_key, m_entry)) {
        throw TakenUpByAnotherLoad(m_sourceName);
    }
    m_saved = m_entry;
    using Mark = Journal::Mark;
    m_journal.Add(Mark::Rejected, m_key, m_newRejects);
    m_journal.Remove(Mark::Rejected, m_key, m_mended);
    m_journal.Add(Mark::Waiting, m_key, m_newWaiting);
    m_journal.Remove(Mark::Waiting, m_key, m_settled);
}

bool LoadJournal::HasSaved() const {
    return m_saved && !IsStored(*m_saved);
}

void LoadJournal::Keep() {
    m_forget = false;
    m_forgotten.clear();
    m_stored = m_saved;
    m_kept = m_entry;
    m_keptRun = m_run;
    m_wasReadToEnd = m_isReadToEnd;
    m_keptWaiting = m_waiting;
    ForgetNotes();
}

void LoadJournal::Undo() {
    m_entry = m_kept;
    m_run = m_keptRun;
    m_isReadToEnd = m_wasReadToEnd;
    m_waiting = m_keptWaiting;
    ForgetNotes();
}

void LoadJournal::ForgetNotes() {
    m_saved.reset();
    m_newRejects.clear();
    m_mended.clear();
    m_newWaiting.clear();
    m_settled.clear();
}

}  // namespace tool
