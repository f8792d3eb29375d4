#ifndef ZTIMPORTER_HISTORYCOLUMNS_H
#define ZTIMPORTER_HISTORYCOLUMNS_H

#include <array>
#include <cstddef>
#include <string_view>
#include <vector>

// The columns of one line of a history value, in the order of history_label, as parts of the text.
struct HistoryColumns {
    // Lines with more columns are left out. One less than there are labels: a line with a comment
    // is dropped whole, and no entry ever gets "comments". Callers rely on the format as it is; do
    // not mend it.
    static constexpr std::size_t kMost = 6;

    std::array<std::u16string_view, kMost> texts;
    std::size_t count = 0;
};

// The lines of a history value, without those that have too many columns. An empty line has none.
std::vector<HistoryColumns> SplitHistory(std::u16string_view value);

#endif
