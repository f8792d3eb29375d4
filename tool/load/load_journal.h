#ifndef TOOL_LOAD_LOAD_JOURNAL_H
#define TOOL_LOAD_LOAD_JOURNAL_H

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "recorddb/errors.h"
#include "recorddb/journal.h"
#include "tool/load/sinks/load_totals.h"

namespace tool {

// What is to be done with a record of a source, as the journal knows it.
enum class RecordTask {
    Import,  // not handled yet
    Retry,   // was rejected, and is to be tried again
    TakeUp,  // waited for other records when an earlier load stopped
    Pass,    // handled in an earlier load
};

// Another load of the same source has taken it up: both would import the same records. Nothing that
// is done again can help.
class TakenUpByAnotherLoad : public recorddb::sql::Error {
  public:
    explicit TakenUpByAnotherLoad(const std::string& sourceName);
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

    // Takes the source up, in the transaction under way: from its commit on no earlier load can
    // Save, and what that load did until then counts as done before. To be called before anything
    // is noted; where it is not, the first Save takes the source up, as it was found.
    void Begin();

    // What has become of the latest Save, when its transaction ended without an answer.
    enum class Outcome { Kept, Undone };

    // Takes the source up again, in the transaction under way, when the connection was lost, and
    // finds out what is stored, which only the database can say. To be followed by its commit, and
    // then by Keep or Undo. Throws TakenUpByAnotherLoad when neither is stored; another sql::Error
    // (Other) when something that was written before is missing, after a failover for instance.
    Outcome BeginAgain();

    const recorddb::journal::JournalKey& Key() const { return m_key; }
    // The number of this load's run of the source; 0 when it has not been taken up.
    std::int64_t Run() const { return m_run; }

    // What earlier loads have done.
    bool WasComplete() const { return m_wasComplete; }
    std::uint64_t HandledBefore() const { return m_handledBefore; }
    std::uint64_t RejectedBefore() const { return m_rejectedBefore; }
    std::uint64_t WaitingBefore() const { return m_waitingBefore.size(); }

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

    // Notes what became of a record. Each is noted once, in the order of their ordinals; one that
    // waits once more, when it does no longer.
    void NoteImported(std::uint64_t ordinal, const LoadTotals& done);
    void NoteRejected(std::uint64_t ordinal);
    void NoteWaiting(std::uint64_t ordinal);
    // To be called together with one of the others, for a record that waited.
    void NoteWaitingEnds(std::uint64_t ordinal);

    // Notes that the source holds no more records.
    void NoteEnd() { m_isReadToEnd = true; }

    // Writes what was noted, in the transaction that is open, which Keep or Undo follows. Throws
    // sql::Error; TakenUpByAnotherLoad.
    void Save();

    // Whether the latest Save, which neither Keep nor Undo has followed, has changed anything.
    bool HasSaved() const;

    // The transaction of the latest Save has been committed.
    void Keep();

    // Forgets what was noted since Keep, or since the beginning: it has been undone.
    void Undo();

  private:
    void TakeAsFound(const recorddb::journal::JournalEntry& entry);
    void NoteHandled(std::uint64_t ordinal);
    void ForgetNotes();
    bool IsStored(const recorddb::journal::JournalEntry& entry) const;

    recorddb::journal::Journal& m_journal;
    recorddb::journal::JournalKey m_key;
    std::string m_sourceName;
    bool m_mayRetry;
    recorddb::journal::JournalEntry m_entry;
    recorddb::journal::JournalEntry m_kept;  // m_entry at the last Keep, or at the beginning
    // As this load knows it to be stored; none: the source had never been loaded.
    std::optional<recorddb::journal::JournalEntry> m_stored;
    // What a Save has written and neither Keep nor Undo has followed.
    std::optional<recorddb::journal::JournalEntry> m_saved;
    std::int64_t m_run = 0;      // 0: the source has not been taken up
    std::int64_t m_keptRun = 0;  // m_run at the last Keep, or at the beginning
    bool m_forget;
    std::vector<recorddb::journal::JournalKey> m_forgotten;
    bool m_wasComplete = false;
    std::uint64_t m_handledBefore = 0;
    std::uint64_t m_rejectedBefore = 0;
    std::unordered_set<std::uint64_t> m_retry;
    std::vector<std::int64_t> m_waitingBefore;  // ascending
    bool m_isReadToEnd = false;
    bool m_wasReadToEnd = false;  // m_isReadToEnd at the last Keep, or at the beginning
    std::int64_t m_waiting = 0;   // records that wait and are marked so
    std::int64_t m_keptWaiting = 0;
    std::vector<std::int64_t> m_newRejects;
    std::vector<std::int64_t> m_mended;
    std::vector<std::int64_t> m_newWaiting;
    std::vector<std::int64_t> m_settled;
};

}  // namespace tool

#endif
