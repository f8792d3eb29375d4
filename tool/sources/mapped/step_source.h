#ifndef TOOL_SOURCES_MAPPED_STEP_SOURCE_H
#define TOOL_SOURCES_MAPPED_STEP_SOURCE_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tool/guarded/guarded_text.h"
#include "tool/map/map_file.h"
#include "tool/sources/kind/made_source.h"
#include "tool/sources/mapped/record_spool.h"
#include "tool/sources/mapped/step_plan.h"

namespace tool {

// A file that rows were read from.
struct ReadFile {
    std::string name;
    MapFormat format = MapFormat::Csv;
};

// The word for a row of a file of a format.
std::string_view RowWord(MapFormat format);

// What the reading of a step needs besides its records.
struct StepPackets {
    std::string name;
    std::string configuration;                               // the packet
    std::map<std::string, PacketPlace, std::less<>> places;  // of fields; Text for the others
    std::shared_ptr<const std::vector<ReadFile>> files;
};

StepPackets PacketsOf(const StepPlan& plan, const recorddb::schema::Schema& schema,
                      std::shared_ptr<const std::vector<ReadFile>> files);

// Appends the record of a packet that says `values`.
void AppendPacketRecord(const SourceValues& values, const StepPackets& packets, std::string& out);

// The configuration of a step.
class StepConfiguration final : public MadeSource {
  public:
    explicit StepConfiguration(std::shared_ptr<const StepPackets> packets);

    const std::string& Name() const override { return m_packets->name; }
    const std::string& Sha256() const override { return m_sha256; }
    std::uint64_t Size() const override { return 0; }
    std::unique_ptr<RecordSource> Open() const override;

  private:
    std::shared_ptr<const StepPackets> m_packets;
    std::string m_sha256;
};

// The records of a step.
class StepRecords final : public MadeSource {
  public:
    StepRecords(std::shared_ptr<const StepPackets> packets, std::unique_ptr<RecordSpool> spool,
                std::string sha256);

    const std::string& Name() const override { return m_packets->name; }
    const std::string& Sha256() const override { return m_sha256; }
    std::uint64_t Size() const override { return m_spool->Size(); }
    std::unique_ptr<RecordSource> Open() const override;

  private:
    std::shared_ptr<const StepPackets> m_packets;
    std::unique_ptr<RecordSpool> m_spool;
    std::string m_sha256;
};

}  // namespace tool

#endif
