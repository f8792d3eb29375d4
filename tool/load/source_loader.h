#ifndef TOOL_LOAD_SOURCE_LOADER_H
#define TOOL_LOAD_SOURCE_LOADER_H

#include <cstdint>
#include <optional>
#include <string>

#include "recorddb/database.h"
#include "recorddb/session/session.h"
#include "tool/io/source_file.h"
#include "tool/load/load_journal.h"
#include "tool/load/load_options.h"
#include "tool/load/load_policy.h"
#include "tool/load/load_sinks.h"
#include "tool/load/missing_records.h"
#include "tool/load/record_group.h"
#include "tool/load/record_importer.h"
#include "tool/load/unfinished_sources.h"
#include "tool/losses/loss_finder.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/packet_reader.h"
#include "tool/sources/source_list.h"

namespace tool {

// Loads sources one after the other: configurations are put in force, records are imported each by
// itself. What a rejected record had written is undone, so that a record is in the database as a
// whole or not at all, and the journal is written with the records it speaks of.
//
// What becomes of the work as a whole is for the policy to say (LoadPolicy).
class SourceLoader {
  public:
    // All of them stay the caller's.
    SourceLoader(recorddb::Database& database, AdPtr<recorddb::Session> session,
                 const LoadOptions& options, const LoadPolicy& policy, LoadSinks& sinks);

    // Throws SourceError when the source or its configuration cannot be used, when the source
    // changes while it is read, and when an unfinished load has imported a part of it as it was
    // before a change; sql::Error when the database fails, MemoryError when there is not enough
    // memory. What was made permanent before stays, and the same load goes on from there.
    void Load(const Source& source);

    // True when the load was to end early, because of a signal or of too many rejected records.
    bool Stopped() const { return m_stopped; }

  private:
    void LoadConfiguration(PacketReader& reader, const SourceFile& source);
    void LoadData(PacketReader& reader, const SourceFile& source);
    void CheckData(const SourceFile& source);
    void PassOver(PacketReader& reader, const LoadJournal& journal);
    void ExamineRecords(PacketReader& reader);
    ReaderOptions ReadingOptions(const SourceFile& source);
    LoadJournal OpenJournal(const SourceFile& source);
    void TellOfRejectedBefore(const SourceFile& source, const LoadJournal& journal);
    void ImportData(PacketReader& reader, const SourceFile& source, LoadJournal& journal);
    void LoadRecords(PacketReader& reader, const SourceFile& source, LoadJournal& journal);
    void LoadRecord(const SourceRecord& record, const SourceFile& source, LoadJournal& journal);
    void LoadWhole(PacketReader& reader, const SourceFile& source, LoadJournal& journal);
    bool ImportOne(std::string_view packet, std::uint64_t ordinal, LoadJournal& journal,
                   std::string& error);
    void Reject(const SourceRecord& record, const SourceFile& source, const std::string& reason);
    void CommitGroup(const SourceFile& source, LoadJournal& journal);
    bool MustStop() const;

    recorddb::Database& m_database;
    AdPtr<recorddb::Session> m_session;
    const LoadOptions& m_options;
    const LoadPolicy& m_policy;
    LoadSinks& m_sinks;
    ImportConfiguration m_configuration;
    MissingRecords m_missing;
    UnfinishedSources m_unfinished;
    RecordImporter m_importer;
    RecordGroup m_group;
    LoadTotals m_uncommitted;            // what was done since the last commit
    std::optional<LossFinder> m_losses;  // nothing when none are looked for
    std::uint64_t m_bytesBefore = 0;     // sizes of the sources dealt with
    std::uint64_t m_number = 1;          // of the record in hand, from 1
    bool m_stopped = false;
};

}  // namespace tool

#endif
