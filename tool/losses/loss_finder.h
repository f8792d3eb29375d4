#ifndef TOOL_LOSSES_LOSS_FINDER_H
#define TOOL_LOSSES_LOSS_FINDER_H

#include <cstdint>
#include <optional>
#include <string>

#include "recorddb/model/schema.h"
#include "tool/losses/key_losses.h"
#include "tool/losses/loss.h"
#include "tool/losses/record_losses.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/packet_reader.h"

namespace tool {

// Goes along with the reading of sources, one after the other, and finds what an import drops of
// them silently.
class LossFinder {
  public:
    // SCHEMA stays the caller's. EXISTS looks into the database.
    LossFinder(const recorddb::schema::Schema& schema, KeyLosses::Exists exists, LossTaker take)
        : m_schema(schema), m_keys(schema, std::move(exists)), m_take(std::move(take)) {}

    // Says that CONFIGURATION is in force, in which PACKET, the source called SOURCE, has been
    // applied.
    void Configure(const std::string& packet, const std::string& source,
                   const ImportConfiguration& configuration);

    // Begins a source of record data; without a configuration that is a loss itself.
    void BeginData(const std::string& source);
    // Examines the next of its records.
    void Examine(const SourceRecord& record);
    // Says that it holds no more records.
    void EndData();

  private:
    const recorddb::schema::Schema& m_schema;
    KeyLosses m_keys;
    LossTaker m_take;
    ImportConfiguration m_configuration;
    std::optional<RecordLosses> m_recordLosses;
    std::string m_source;
    std::uint64_t m_examined = 0;
};

// The loss of what looks like a record in the source called SOURCE and is not read as one.
Loss LossOf(const UnseenRecord& unseen, const std::string& source);

// The loss that a defect around the records of the source called SOURCE is the sign of.
Loss LossOf(const FrameDefect& defect, const std::string& source);

}  // namespace tool

#endif
