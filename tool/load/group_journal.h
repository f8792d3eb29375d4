#ifndef TOOL_LOAD_GROUP_JOURNAL_H
#define TOOL_LOAD_GROUP_JOURNAL_H

#include <cstdint>

#include "tool/load/load_journal.h"
#include "tool/load/load_sinks.h"
#include "tool/load/load_totals.h"
#include "tool/load/record_group.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Notes what becomes of the records of one source, and makes it permanent together with them, group
// by group: the journal is written in the transaction of its records.
class GroupJournal {
  public:
    // All but the journal outlive the object. `walk` stands in the source.
    GroupJournal(LoadJournal journal, const SourceWalk& walk, RecordGroup& group, LoadSinks& sinks);

    const LoadJournal& Journal() const { return m_journal; }

    // Note what became of a record. Records are noted in the order of their ordinals.
    void NoteImported(std::uint64_t ordinal, const LoadTotals& done);
    void NoteRejected(std::uint64_t ordinal) { m_journal.NoteRejected(ordinal); }
    // Notes that the source holds no more records.
    void NoteEnd() { m_journal.NoteEnd(); }

    // Whether the sinks were told of this record of the group that it was rejected, before the
    // group was undone. It stays so.
    bool WasToldRejected(std::uint64_t ordinal) const { return m_sinks.HasTold(ordinal); }

    // Makes sure that a transaction is open for the group.
    void OpenGroup() { m_group.Open(); }

    // Ends the group: writes what it has gathered, tells the sinks what was held back from them,
    // and makes it permanent. Rejected records are on the disk before the journal says that they
    // were rejected. Throws SourceError when the source has changed meanwhile, sql::Error, and what
    // the sinks throw.
    void Commit();

    // Ends the group and leaves the journal as it is: nothing was noted.
    void CommitUnnoted() {
        m_group.Commit();
        m_sinks.Keep();
    }

    // Undoes the group and what was noted of it.
    void Undo();

    // After the connection was lost, with a group or at its end: takes the source up again, and
    // finds out from the database what became of the group. True when it is permanent; otherwise it
    // is as after Undo. Throws sql::Error, after which this may be tried again.
    bool TakeUpAgain();

  private:
    void Keep();

    LoadJournal m_journal;
    const SourceWalk& m_walk;
    RecordGroup& m_group;
    LoadSinks& m_sinks;
    LoadTotals m_uncommitted;  // what was done since the last commit
};

}  // namespace tool

#endif
