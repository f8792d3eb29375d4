#ifndef TOOL_LOAD_SOURCE_LOADER_H
#define TOOL_LOAD_SOURCE_LOADER_H

#include <memory>

#include "recorddb/database.h"
#include "recorddb/session.h"
#include "tool/load/group_journal.h"
#include "tool/load/group_loader.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/policy/load_policy.h"
#include "tool/load/records/atomic_import.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_importer.h"
#include "tool/load/records/record_rejecter.h"
#include "tool/load/recovery.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/source_journals.h"
#include "tool/load/waiting/waiting_room.h"
#include "tool/load/workers/crew.h"
#include "tool/losses/loss_search.h"
#include "tool/sources/source_list.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Loads sources one after the other: configurations are put in force, records are imported each by
// itself, and those that refer to later ones when these have come, be it from another source. What
// a rejected record had written is undone, so that a record is in the database as a whole or not at
// all, and the journal is written in the same transaction as its records.
//
// The policy decides what becomes of the work as a whole.
class SourceLoader {
  public:
    // All of them outlive the object.
    SourceLoader(recorddb::Database& database, AdPtr<recorddb::Session> session,
                 const LoadOptions& options, const LoadPolicy& policy, LoadSinks& sinks);

    // Returns false when the load ended early, because of a signal or of too many rejected records.
    //
    // Throws SourceError when a source or its configuration cannot be used, when a source changes
    // while it is read, and when an unfinished load has imported a part of it as it was before a
    // change; sql::Error when the database fails, MemoryError when there is not enough memory, and
    // what the sinks throw. What was made permanent before stays, and the same load goes on from
    // there.
    bool Load(const SourceList& sources);

  private:
    void Configure(const SourceWalk& walk);
    bool LoadData(SourceWalk& walk);
    bool ImportData(SourceWalk& walk);
    void MakeIndexes(const ImportConfiguration& configuration);
    LoadJournal OpenJournal(const SourceWalk& walk);
    const LoadJournal* FindUnderWay(const SourceWalk& walk) const;

    recorddb::Database& m_database;
    AdPtr<recorddb::Session> m_session;
    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    LoadSinks& m_sinks;
    std::unique_ptr<LossSearch> m_losses;
    SourceJournals m_journals;
    RecordImporter m_importer;
    RecordGroup m_group;
    std::unique_ptr<Crew> m_crew;  // null: nobody works ahead
    Recovery m_recovery;
    AtomicImport m_import;
    RecordRejecter m_rejecter;
    WaitingRoom m_room;
    GroupJournal m_journal;
    GroupLoader m_loader;
};

}  // namespace tool

#endif
