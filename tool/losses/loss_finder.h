#ifndef TOOL_LOSSES_LOSS_FINDER_H
#define TOOL_LOSSES_LOSS_FINDER_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/schema.h"
#include "tool/losses/key_losses.h"
#include "tool/losses/loss.h"
#include "tool/losses/loss_search.h"
#include "tool/losses/record_examiner.h"
#include "tool/losses/record_losses.h"
#include "tool/packet/import_configuration.h"
#include "tool/packet/packet_frame.h"
#include "tool/packet/record_cutter.h"
#include "tool/sources/kind/map_findings.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// The full search: in configurations, in records, and for sources without any.
class LossFinder final : public LossSearch {
  public:
    // `schema` stays the caller's. `existing` looks into the database.
    LossFinder(const recorddb::schema::Schema& schema, KeyLosses::Existing existing, LossTaker take)
        : m_schema(schema), m_examiner(schema, std::move(existing)), m_take(std::move(take)) {}

    void Configure(const std::string& packet, const std::string& source,
                   const ImportConfiguration& configuration) override;
    bool ExaminesRecords() const override { return true; }
    // Without a configuration the source is a loss itself.
    void BeginData(const std::string& source) override;
    void Examine(const SourceRecord& record) override;
    void TakeOver(const std::vector<Loss>& losses) override;
    void EndData() override;

  private:
    const recorddb::schema::Schema& m_schema;
    RecordExaminer m_examiner;
    LossTaker m_take;
    ImportConfiguration m_configuration;
    std::string m_source;
    std::uint64_t m_examined = 0;
};

// The loss of what looks like a record in the source called `source` and is not read as one.
Loss LossOf(const UnseenRecord& unseen, const std::string& source);

// The loss that a defect around the records of the source called `source` is the sign of.
Loss LossOf(const FrameDefect& defect, const std::string& source);

// The loss that a finding of the map called `map` is; nothing when it is none.
std::optional<Loss> LossOf(const MapFinding& finding, const std::string& map);

}  // namespace tool

#endif
