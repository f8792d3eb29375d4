#include "tool/report/loss_log.h"

#include <fmt/format.h>

#include <numeric>

namespace tool {

std::optional<std::string> LossLog::Add(const Loss& loss) {
    const std::uint64_t count = ++m_counts.at(static_cast<std::size_t>(loss.kind));
    if (count <= kShownOfEachKind) {
        return fmt::format("would be lost: {}: {}", PlaceOf(loss), loss.text);
    }
    if (count == kShownOfEachKind + 1) {
        return fmt::format("would be lost: further {} are counted; --report lists all",
                           LossKindTitle(loss.kind));
    }
    return std::nullopt;
}

std::uint64_t LossLog::Count() const {
    return std::accumulate(m_counts.begin(), m_counts.end(), std::uint64_t{0});
}

std::uint64_t LossLog::Count(LossKind kind) const {
    return m_counts.at(static_cast<std::size_t>(kind));
}

std::string LossLog::Summary() const {
    std::string text;
    for (const LossKind kind : kLossKinds) {
        if (const std::uint64_t count = Count(kind); count > 0) {
            text += fmt::format("{}: {}\n", LossKindTitle(kind), count);
        }
    }
    return text;
}

std::string PlaceOf(const Loss& loss) {
    std::string place = loss.source;
    if (loss.record > 0) {
        place += fmt::format(", {} {}", loss.unit, loss.record);
        place += loss.sourceId.empty() ? "" : fmt::format(" ({})", loss.sourceId);
    }
    if (loss.line > 0) {
        place += fmt::format(", line {}", loss.line);
    }
    return place + (loss.field.empty() ? "" : fmt::format(", field {}", loss.field));
}

}  // namespace tool
