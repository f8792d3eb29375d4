#ifndef TOOL_LOAD_GROUP_JOURNAL_H
#define TOOL_LOAD_GROUP_JOURNAL_H

#include <cstdint>
#include <map>

#include "recorddb/journal.h"
#include "tool/load/load_journal.h"
#include "tool/load/loaded_source.h"
#include "tool/load/records/record_group.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/load/sinks/place.h"
#include "tool/load/waiting/waiting_room.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Notes what becomes of the records of a load, and makes it permanent together with them, group by
// group: the journals of their sources are written in the transaction of the records. What waits
// (WaitingRoom) goes with the group, too.
class GroupJournal {
  public:
    // All of them outlive the object.
    GroupJournal(RecordGroup& group, LoadSinks& sinks, WaitingRoom& room);

    // Begins the source that `walk` is at. Sources are numbered in the order of these calls.
    void BeginSource(LoadJournal journal, const SourceWalk& walk);
    // Ends the current source, whether all of its records were read or not. No group may be open.
    void EndSource();

    // The source that is being read.
    LoadedSource& Current() { return m_sources.at(m_number); }
    const LoadJournal& Journal() { return Current().journal; }
    Place PlaceOf(std::uint64_t ordinal) const { return tool::PlaceOf(m_number, ordinal); }

    // The journal of an earlier source with that key of which records still wait; null when there
    // is none.
    const LoadJournal* Find(const recorddb::journal::JournalKey& key) const;

    LoadedSource& SourceAt(Place place) { return m_sources.at(SourceOf(place)); }
    bool IsCurrent(Place place) const { return m_walk != nullptr && SourceOf(place) == m_number; }

    // Note what became of a record.
    void NoteImported(Place place, const LoadTotals& done);
    void NoteRejected(Place place);
    // The record was put off; `isTakenUp`: an earlier load has noted so already.
    void NoteWaiting(Place place, bool isTakenUp);
    // A record that was put off waits no longer. To be called together with NoteImported or
    // NoteRejected.
    void NoteWaitingEnds(Place place);
    // Notes that the current source holds no more records.
    void NoteEnd() { Current().journal.NoteEnd(); }

    // Whether the sinks were told of this record of the group that it was rejected, before the
    // group was undone. It stays so.
    bool WasToldRejected(Place place) const { return m_sinks.HasTold(place); }

    // Makes sure that a transaction is open for the group.
    void OpenGroup() { m_group.Open(); }

    // Ends the group: writes what it has gathered, tells the sinks what was held back from them up
    // to the time given, and makes it permanent. Rejected records are on the disk before the
    // journal says that they were rejected. Throws SourceError when the source has changed
    // meanwhile, sql::Error, and what the sinks throw.
    void Commit(NewsTime last = NewsTime::End());

    // Ends the group and leaves the journal as it is: nothing was noted.
    void CommitUnnoted() {
        m_group.Commit();
        m_sinks.Keep();
    }

    // Undoes the group and what was noted of it.
    void Undo();

    // After the connection was lost, with a group or at its end: takes the sources up again, and
    // finds out from the database what became of the group. True when it is permanent; otherwise it
    // is as after Undo. Throws sql::Error, after which this may be tried again.
    bool TakeUpAgain();

  private:
    LoadedSource& Touched(Place place);
    void Keep();
    void ForgetFinished();

    RecordGroup& m_group;
    LoadSinks& m_sinks;
    WaitingRoom& m_room;
    const SourceWalk* m_walk = nullptr;  // through the current source; null between sources
    std::uint64_t m_number = 0;          // of the current source
    std::map<std::uint64_t, LoadedSource> m_sources;
};

}  // namespace tool

#endif
