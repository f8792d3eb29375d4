#ifndef TOOL_LOAD_GROUP_LOADER_H
#define TOOL_LOAD_GROUP_LOADER_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "recorddb/errors.h"
#include "recorddb/schema.h"
#include "recorddb/session.h"
#include "tool/load/group_journal.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/records/atomic_import.h"
#include "tool/load/records/kept_records.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_rejecter.h"
#include "tool/load/recovery.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/sinks/load_totals.h"
#include "tool/load/source_importers.h"
#include "tool/load/waiting/waiting_record.h"
#include "tool/load/waiting/waiting_records.h"
#include "tool/load/waiting/waiting_room.h"
#include "tool/load/workers/package.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Does the records of a load in groups: each is imported, rejected or put off until what it waits
// for is there, and a group that is undone is done again. What has waited is tried before the next
// record is, in the order of the sources; the result does not depend on where groups end.
class GroupLoader {
  public:
    // What it works with, all of which outlives it.
    struct Parts {
        const LoadOptions& options;
        LoadSinks& sinks;
        const recorddb::schema::Schema& schema;
        AtomicImport& import;  // under the configuration of the current source
        RecordRejecter& rejecter;
        RecordGroup& group;
        Recovery& recovery;
        WaitingRoom& room;
        GroupJournal& journal;
        bool readsFar;  // more than the records of a group are read ahead
    };

    GroupLoader(const Parts& parts, const AdPtr<recorddb::Session>& session);

    // Whether what the records of a group write is gathered, or would be.
    bool IsGathered() const { return m_isGathered; }

    // Deals with a record of the current source that is not to be passed over, and with those that
    // wait for it; ends groups that have become large enough. `prepare` comes before the record,
    // in its group. Throws SourceError when the source has changed, sql::Error, std::bad_alloc,
    // std::runtime_error when the temporary file of waiting records fails, and what the sinks
    // throw.
    void Load(const SourceRecord& record, const std::function<void()>& prepare);

    // Takes over what was done ahead with records of the current source, which have not been dealt
    // with, as a group or a further part of one. False when they are to be loaded now, after
    // EndGroup: it could not be done ahead, or might come to something else after what has been
    // written meanwhile. After true, NoteAdopted follows for each record that was to be imported,
    // and then this again, while MayAdoptMore, or EndGroup.
    bool Adopt(Package& package);
    void NoteAdopted(const SourceRecord& record, const LoadTotals& done);
    bool MayAdoptMore() const {
        return m_adopted < m_parts.options.groupsTogether && m_adoptedBytes < RecordGroup::kBytes;
    }

    // What records wait for, by kinds, for those who work ahead; null when none waits.
    const std::shared_ptr<const WatchedKeys>& Watched() const { return m_waitingRecords.Watched(); }

    // Ends the group; `atEnd`: the source holds no more records.
    void EndGroup(bool atEnd);

    // At the end of the load: tries what still waits a last time, and rejects what is refused then.
    // Returns false when the load is to end early. `advance` is called for each.
    bool EndWaiting(const std::function<void()>& advance);

    // Imports one packet under the current configuration. When it fails, sets `error` to the
    // reason, and nothing of it is written.
    bool Import(std::string_view packet, Place place, std::string& error);

    bool HasTooManyRejects() const;

    // Whether no further record is to be dealt with: after a signal, or too many rejects. When a
    // group is done again, a part of it is then left for the load that continues this one, and what
    // comes after it would hide that.
    bool MustStop() const;

    // Does something that may write what was gathered. False when the group was undone by that; it
    // has been done again and ended then.
    bool Do(const std::function<void()>& step);

  private:
    enum class Try { Again, Last };

    bool Work(const SourceRecord& record);
    bool TakeUp(const SourceRecord& record, Place place);
    bool PutOffIfMissing(const SourceRecord& record, Place place, std::string& error);
    void Reject(const SourceRecord& record, Place place, const std::string& reason,
                std::vector<WantedRecord> missing);

    bool LoadReady();
    void LoadWaiting(Try which);
    void CountInGroup(const SourceRecord& record);
    bool TryNext(Try which);
    bool TryWaiting(Place place, Try which);

    void Commit(bool atEnd);
    void FinishGroup();

    // How a group is done again that was undone: as a whole, once the database has said whether it
    // was undone at all; as a whole; or record by record, each written by itself.
    enum class Redo { IfUndone, AsGroup, OneByOne };
    template <typename Step>
    bool DoUntilKept(Step step, bool atEnd);
    Redo UndoAfter(const recorddb::sql::Error& error, int failures);
    void BeginAgain(Redo redo);
    void LoadInTurn(Redo redo, bool atEnd);
    void DoAgain(Redo redo, bool atEnd);
    bool DoRecordsAgain();

    Parts m_parts;
    SourceImporters m_importers;
    WaitingRecords m_waitingRecords;
    const bool m_isGathered;
    const bool m_keepsRecords;
    KeptRecords m_kept;         // of the current group, if they may have to be done again
    WaitingRecord m_waiting;    // that is being tried
    std::uint64_t m_tries = 0;  // of waiting records in the current group
    std::size_t m_adopted = 0;  // packages of which the current group consists
    std::size_t m_adoptedBytes = 0;
    bool m_isEnding = false;  // no more records are read
    NewsTime m_time;
    NewsTime m_timeAtGroup;  // before the current group
};

}  // namespace tool

#endif
