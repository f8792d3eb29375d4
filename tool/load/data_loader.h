#ifndef TOOL_LOAD_DATA_LOADER_H
#define TOOL_LOAD_DATA_LOADER_H

#include <cstdint>
#include <string>
#include <string_view>

#include "tool/load/atomic_import.h"
#include "tool/load/expected_searches.h"
#include "tool/load/group_journal.h"
#include "tool/load/kept_records.h"
#include "tool/load/load_options.h"
#include "tool/load/load_sinks.h"
#include "tool/load/record_group.h"
#include "tool/load/record_rejecter.h"
#include "tool/load/records_ahead.h"
#include "tool/load/recovery.h"
#include "tool/losses/loss_search.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Loads the records of one source: each is imported or rejected, unless an earlier load has dealt
// with it, and is noted in the journal.
class DataLoader {
  public:
    // What the sources of a load have in common. All of it outlives the object.
    struct Parts {
        const LoadOptions& options;
        LoadSinks& sinks;
        LossSearch& losses;
        AtomicImport& import;
        RecordRejecter& rejecter;
        RecordGroup& group;
        Recovery& recovery;
        const recorddb::schema::Schema& schema;
        // Whether the database is asked ahead for what the records of a group will need.
        bool looksAhead;
    };

    // `walk` stands at the beginning of the source: no record of it has been read yet.
    DataLoader(SourceWalk& walk, GroupJournal& journal, const Parts& parts);

    // Loads what is left to do. Returns false when the load is to end early, because of a signal or
    // of too many rejected records. Throws SourceError when the source changes or cannot be read
    // on, sql::Error, std::bad_alloc, and what the sinks throw.
    bool Load();

    // Passes over a source of which an earlier load has dealt with all records; they are read only
    // to find losses. Otherwise as Load.
    bool PassOver();

    // The number of the current record, from 1.
    std::uint64_t Number() const { return m_number; }

  private:
    bool LoadRecords();
    bool LoadWhole();
    void RejectWhole(const WholePacket& whole, const std::string& error);
    bool ExamineRecords();
    void LoadRecord(const SourceRecord& record);
    void LookAhead();
    bool Work(const SourceRecord& record);
    void EndGroup(bool atEnd);
    void Commit(bool atEnd);

    // How a group is done again that was undone: as a whole, once the database has said whether it
    // was undone at all; as a whole; or record by record, each written by itself.
    enum class Redo { IfUndone, AsGroup, OneByOne };
    template <typename Step>
    bool DoUntilKept(Step step, bool atEnd);
    Redo UndoAfter(const recorddb::sql::Error& error, int failures);
    void DoAgain(Redo redo, bool atEnd);
    void FinishGroup();
    bool Import(std::string_view packet, std::uint64_t ordinal, std::string& error);
    bool HasTooManyRejects() const;

    SourceWalk& m_walk;
    GroupJournal& m_journal;
    const Parts& m_parts;
    RecordsAhead m_records;
    ExpectedSearches m_expected;
    const bool m_isGathered;  // whether the records of a group are gathered, or would be
    const bool m_keepsRecords;
    KeptRecords m_kept;  // of the current group, if they may have to be done again
    std::uint64_t m_number = 1;
};

}  // namespace tool

#endif
