#ifndef TOOL_LOAD_LOAD_JOURNAL_H
#define TOOL_LOAD_LOAD_JOURNAL_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "recorddb/journal.h"
#include "tool/load/load_totals.h"

namespace tool {

// What is to be done with a record of a source, as the journal knows it.
enum class RecordTask {
    Import,  // not handled yet
    Retry,   // was rejected, and is to be tried again
    Pass,    // handled in an earlier load
};

// The journal of one source under one configuration, during a load.
class LoadJournal {
  public:
    // `journal` outlives the object. With `fresh` the journal is taken as empty, and what it knew
    // of the source is forgotten at the first Save. With `retry` the records that were rejected in
    // a source that was read to its end are to be tried again; those of an interrupted load are
    // not, since the result must be that of an undisturbed load.
    LoadJournal(recorddb::journal::Journal& journal, recorddb::journal::JournalKey key,
                std::string sourceName, bool fresh, bool retry);

    // What earlier loads have done.
    bool WasComplete() const { return m_wasComplete; }
    std::uint64_t HandledBefore() const { return m_handledBefore; }
    std::uint64_t RejectedBefore() const { return m_rejectedBefore; }

    // True when rejected records of an earlier load are to be tried again.
    bool Retries() const { return !m_retry.empty(); }

    // True when nothing of the source is left to do.
    bool NothingToDo() const { return m_wasComplete && m_retry.empty(); }

    // The number of records that this load and earlier ones have dealt with as of the last Save.
    std::uint64_t HandledForGood() const {
        return m_stored && !m_forget ? static_cast<std::uint64_t>(m_stored->nextOrdinal) : 0;
    }

    // Also forgets the entry of `key`, a former content of the source, at the first Save.
    void AlsoForget(recorddb::journal::JournalKey key) { m_forgotten.push_back(std::move(key)); }

    RecordTask TaskOf(std::uint64_t ordinal) const;

    // Notes what became of a record. Records are noted in the order of their ordinals.
    void NoteImported(std::uint64_t ordinal, const LoadTotals& done);
    void NoteRejected(std::uint64_t ordinal);

    // Notes that the source holds no more records.
    void NoteEnd() { m_entry.complete = true; }

    // Writes what was noted, in the transaction that is open. Throws sql::Error (Busy) when another
    // load has written the same entry since this one read it: both would import the same records.
    void Save();

    // Forgets what was noted since Save, or since the beginning: it has been undone.
    void Undo();

  private:
    void NoteHandled(std::uint64_t ordinal);

    recorddb::journal::Journal& m_journal;
    recorddb::journal::JournalKey m_key;
    recorddb::journal::JournalEntry m_entry;
    recorddb::journal::JournalEntry m_saved;  // m_entry at the last Save, or at the beginning
    std::optional<recorddb::journal::JournalEntry> m_stored;  // as this load knows it to be stored
    bool m_forget;
    std::vector<recorddb::journal::JournalKey> m_forgotten;
    bool m_wasComplete = false;
    std::uint64_t m_handledBefore = 0;
    std::uint64_t m_rejectedBefore = 0;
    std::unordered_set<std::uint64_t> m_retry;
    std::vector<std::int64_t> m_newRejects;
    std::vector<std::int64_t> m_mended;
};

}  // namespace tool

#endif
