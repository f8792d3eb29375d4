#ifndef TOOL_REPORT_LOSS_LOG_H
#define TOOL_REPORT_LOSS_LOG_H

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "tool/losses/loss.h"

namespace tool {

// The losses of a run as the terminal shows them: the first few of each kind, and how many there
// are.
class LossLog {
  public:
    static constexpr std::uint64_t kShownOfEachKind = 20;

    // Counts a loss. Returns the line to show for it, nothing when there have been enough.
    std::optional<std::string> Add(const Loss& loss);

    std::uint64_t Count() const;
    std::uint64_t Count(LossKind kind) const;

    // The kinds that there are losses of and their numbers, one a line; empty without losses.
    std::string Summary() const;

  private:
    std::array<std::uint64_t, kLossKinds.size()> m_counts{};
};

// Where a loss is, for people: "bugs.xml, record 3 (core-25), line 412, field title".
std::string PlaceOf(const Loss& loss);

}  // namespace tool

#endif
