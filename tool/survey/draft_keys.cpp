#include "tool/survey/draft_keys.h"

#include <algorithm>

#include "tool/survey/key_rules.h"
#include "tool/survey/value_counts.h"

namespace tool {

std::optional<std::size_t> FindRowKey(const SourceSurvey& source) {
    std::optional<std::size_t> best;
    const auto isBetter = [&](const AddressSurvey& a, const AddressSurvey& b) {
        const bool isKey = IsKey(source, a) && CanBeKey(a);
        const bool isOther = IsKey(source, b) && CanBeKey(b);
        if (isKey != isOther || isKey) {
            return isKey && (!isOther || KeyRank(a) < KeyRank(b));
        }
        const std::size_t distinct = a.distinct.value_or(ValueCounts::kLimit);
        return distinct > b.distinct.value_or(ValueCounts::kLimit);
    };
    for (std::size_t i = 0; i < source.addresses.size(); ++i) {
        const AddressSurvey& address = source.addresses[i];
        if (address.Values() == 0 || !address.IsScalarOnly() || address.IsInList() ||
            address.severalLines > 0 || address.longest > kLongestKeyText) {
            continue;
        }
        if (!best || isBetter(address, source.addresses[*best])) {
            best = i;
        }
    }
    return best;
}

std::optional<std::size_t> FindItemKey(const SourceSurvey& source, std::size_t element,
                                       std::size_t end) {
    std::optional<std::size_t> key;
    for (std::size_t i = element + 1; i < end; ++i) {
        const AddressSurvey& address = source.addresses[i];
        const auto depth = static_cast<std::ptrdiff_t>(source.addresses[element].steps.size());
        const bool isDirect = std::find(address.isElement.begin() + depth, address.isElement.end(),
                                        true) == address.isElement.end();
        if (isDirect && CanBeKey(address) && CanBeNamed(source, address) &&
            address.Values() == source.addresses[element].objects &&
            (!key || KeyRank(address) < KeyRank(source.addresses[*key]))) {
            key = i;
        }
    }
    return key;
}

}  // namespace tool
