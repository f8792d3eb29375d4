#ifndef TOOL_LOSSES_LOSS_SEARCH_H
#define TOOL_LOSSES_LOSS_SEARCH_H

#include <string>
#include <vector>

#include "tool/losses/loss.h"
#include "tool/packet/import_configuration.h"
#include "tool/sources/kind/source_record.h"

namespace tool {

// Follows the reading of sources, one after the other, and looks for what an import drops silently.
class LossSearch {
  public:
    LossSearch() = default;
    LossSearch(const LossSearch&) = delete;
    LossSearch& operator=(const LossSearch&) = delete;
    virtual ~LossSearch() = default;

    // Says that `configuration` is in force, in which `packet`, the source called `source`, has
    // been applied.
    virtual void Configure(const std::string& packet, const std::string& source,
                           const ImportConfiguration& configuration) = 0;

    // Whether records are examined at all. If not, they need not be read for the search.
    virtual bool ExaminesRecords() const = 0;

    // Begins a source of record data.
    virtual void BeginData(const std::string& source) = 0;
    // Examines the next of its records.
    virtual void Examine(const SourceRecord& record) = 0;
    // Takes note of the losses of the next record, which was examined elsewhere (RecordExaminer).
    virtual void TakeOver(const std::vector<Loss>& losses) = 0;
    // Says that it holds no more records.
    virtual void EndData() = 0;
};

}  // namespace tool

#endif
