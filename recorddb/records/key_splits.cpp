#include "recorddb/records/key_splits.h"

namespace recorddb {

namespace {

constexpr std::size_t mostSplits = 1000;

void Split(std::string_view rest, std::size_t parts, std::vector<std::string_view>& taken,
           std::vector<std::vector<std::string_view>>& splits) {
    if (parts == 1) {
        if (!rest.empty()) {
            splits.push_back(taken);
            splits.back().push_back(rest);
        }
        return;
    }
    for (std::size_t blank = rest.find(' ', 1);
         blank != std::string_view::npos && splits.size() < mostSplits;
         blank = rest.find(' ', blank + 1)) {
        taken.push_back(rest.substr(0, blank));
        Split(rest.substr(blank + 1), parts - 1, taken, splits);
        taken.pop_back();
    }
}

}  // namespace

std::vector<std::vector<std::string_view>> KeySplits(std::string_view text, std::size_t parts) {
    std::vector<std::vector<std::string_view>> splits;
    std::vector<std::string_view> taken;
    Split(text, parts, taken, splits);
    return splits;
}

}  // namespace recorddb
