#ifndef TOOL_LOAD_DATA_LOADER_H
#define TOOL_LOAD_DATA_LOADER_H

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "tool/load/group_journal.h"
#include "tool/load/group_loader.h"
#include "tool/load/policy/load_options.h"
#include "tool/load/records/expected_searches.h"
#include "tool/load/records/record_group.h"
#include "tool/load/records/record_rejecter.h"
#include "tool/load/sinks/load_sinks.h"
#include "tool/load/workers/crew.h"
#include "tool/load/workers/records_ahead.h"
#include "tool/losses/loss_search.h"
#include "tool/sources/source_walk.h"

namespace tool {

// Reads the records of one source and has each loaded, unless an earlier load has dealt with it.
class DataLoader {
  public:
    // What the sources of a load have in common. All of it outlives the object.
    struct Parts {
        const LoadOptions& options;
        LoadSinks& sinks;
        LossSearch& losses;
        GroupLoader& loader;
        GroupJournal& journal;
        RecordRejecter& rejecter;
        RecordGroup& group;
        const recorddb::schema::Schema& schema;
        // Whether the database is asked ahead for what the records of a group will need.
        bool looksAhead;
        Crew* crew;  // that works ahead; null for none
    };

    // `walk` stands at the beginning of the source: no record of it has been read yet; for the
    // journal it is the current one.
    DataLoader(SourceWalk& walk, const Parts& parts);
    DataLoader(const DataLoader&) = delete;
    DataLoader& operator=(const DataLoader&) = delete;
    ~DataLoader();

    // Loads what is left to do. Returns false when the load is to end early, because of a signal or
    // of too many rejected records. Throws SourceError when the source changes or cannot be read
    // on, sql::Error, std::bad_alloc, and what the sinks throw.
    bool Load();

    // Passes over a source whose so many records have been dealt with before; they are read only to
    // find losses. Otherwise as Load.
    bool PassOver(std::uint64_t records);

    // The number of the current record, from 1.
    std::uint64_t Number() const { return m_number; }

  private:
    bool LoadRecords();
    bool LoadWhole();
    void RejectWhole(const WholePacket& whole, const std::string& error);
    bool Examine(const SourceRecord& record);
    bool ExamineRecords();
    void LookAhead();
    RecordsAhead::Limits LimitsOfReading() const;
    WalkStep NextRecord();
    void Give(const std::shared_ptr<Package>& package);
    void TellCrew();
    bool TakeDoneAhead();
    void EndAdopted();
    void HoldNews(std::uint64_t ordinal);

    SourceWalk& m_walk;
    const Parts& m_parts;
    RecordsAhead m_records;
    ExpectedSearches m_expected;
    std::uint64_t m_number = 1;
    std::optional<std::uint64_t> m_lastRead;                     // its ordinal
    std::shared_ptr<const ImportConfiguration> m_configuration;  // for the crew
};

}  // namespace tool

#endif
