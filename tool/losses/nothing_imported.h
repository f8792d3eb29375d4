#ifndef TOOL_LOSSES_NOTHING_IMPORTED_H
#define TOOL_LOSSES_NOTHING_IMPORTED_H

#include <string>
#include <utility>
#include <vector>

#include "tool/losses/configuration_losses.h"
#include "tool/losses/loss_search.h"

namespace tool {

// The search that costs nothing: only for configurations under which nothing at all is imported.
class NothingImportedSearch final : public LossSearch {
  public:
    explicit NothingImportedSearch(LossTaker take) : m_take(std::move(take)) {}

    void Configure(const std::string& /*packet*/, const std::string& source,
                   const ImportConfiguration& configuration) override {
        if (const auto loss = FindNothingImported(source, 0, configuration)) {
            m_take(*loss);
        }
    }
    bool ExaminesRecords() const override { return false; }
    void BeginData(const std::string& /*source*/) override {}
    void Examine(const SourceRecord& /*record*/) override {}
    void TakeOver(const std::vector<Loss>& /*losses*/) override {}
    void EndData() override {}

  private:
    LossTaker m_take;
};

}  // namespace tool

#endif
