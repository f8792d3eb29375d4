#include "ztimporter/historycolumns.h"

#include <optional>

#include "platform/core/adtext.h"

namespace {

// Nothing when there are too many.
std::optional<HistoryColumns> ColumnsOf(std::u16string_view line) {
    HistoryColumns columns;
    for (bool more = !line.empty(); more;) {
        if (columns.count == HistoryColumns::kMost) {
            return std::nullopt;
        }
        const std::size_t end = line.find(u'\t');
        columns.texts[columns.count++] = line.substr(0, end);
        more = end != std::u16string_view::npos;
        line.remove_prefix(more ? end + 1 : line.size());
    }
    return columns;
}

}  // namespace

std::vector<HistoryColumns> SplitHistory(std::u16string_view value) {
    std::vector<HistoryColumns> lines;
    while (!value.empty()) {
        if (const auto columns = ColumnsOf(AdTakeLine(value))) {
            lines.push_back(*columns);
        }
    }
    return lines;
}
