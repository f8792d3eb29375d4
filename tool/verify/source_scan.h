#ifndef TOOL_VERIFY_SOURCE_SCAN_H
#define TOOL_VERIFY_SOURCE_SCAN_H

#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/losses/record_losses.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/source_list.h"
#include "tool/sources/source_walk.h"
#include "tool/verify/records/record_locator.h"
#include "tool/verify/records/record_lookup.h"
#include "tool/verify/records/record_shelf.h"
#include "tool/verify/sinks/verify_sink.h"
#include "tool/verify/sinks/verify_tally.h"

namespace tool {

// The stage of a comparison that reads the sources in their order, finds for each of their records
// the one of the database, and keeps them for the stage that compares. What cannot be found, and
// what an import drops, is reported as a difference.
class SourceScan {
  public:
    // All of them outlive the object. `attachments` is the folder, empty for none.
    SourceScan(RecordLookup& lookup, RecordShelf& shelf, const std::filesystem::path& attachments,
               VerifyTally& tally, VerifySink& sink, const RecordLimits& limits);

    // Reads the sources. Throws SourceError when a source or its configuration cannot be used or
    // the source changes meanwhile, sql::Error when the database fails. Ends early when the process
    // was interrupted. Data that were read before, under the same configuration, are passed over as
    // in a load.
    void Read(const SourceList& sources);

    // What the numbers in kept records stand for.
    const ImportConfiguration& Configuration(std::size_t number) const {
        return m_configurations[number];
    }
    const RecordsPlace& Place(std::size_t number) const { return m_places[number]; }

  private:
    WalkOptions Options();
    void TakeConfiguration();
    void BeginData();
    bool IsRepeated();
    void ReadRecord(const SourceRecord& record);
    std::string WhyNotImported(const SourceRecord& record);
    bool SaysSomething() const;
    void CheckAttachments() const;
    bool FindLosses(const SourceRecord& record);
    void ReportMissing(const SourceRecord& record, const std::string& problem);
    void ReportUnseen(const UnseenRecord& unseen);
    void ReportFrame(const FrameDefect& defect);
    Difference DifferenceAt(std::uint64_t record, std::uint64_t line) const;
    Difference DifferenceIn(const SourceRecord& record) const;
    std::size_t PlaceOf(const SourceRecord& record);
    const ImportConfiguration& Current() const { return m_configurations.back(); }
    const std::string& Name() const { return m_walk->SourceName(); }

    const recorddb::schema::Schema& m_schema;
    RecordLocator m_locator;
    RecordShelf& m_shelf;
    const std::filesystem::path& m_attachments;
    VerifyTally& m_tally;
    VerifySink& m_sink;
    RecordLimits m_limits;
    std::deque<ImportConfiguration> m_configurations;  // which stay where they are
    std::optional<SourceWalk> m_walk;
    std::vector<RecordsPlace> m_places;
    std::map<std::string, std::size_t> m_placeOf;  // by name
    std::set<std::string> m_contents;              // what was read, by hash and configuration
    const recorddb::schema::RecordType* m_type = nullptr;  // of the configuration in force
    std::optional<RecordLosses> m_losses;                  // under that configuration
    std::uint64_t m_read = 0;                              // records of all sources
    RecordReadings m_readings;
    KeptRecord m_record;
};

}  // namespace tool

#endif
