#include "tool/survey/key_rules.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace tool {

std::string LastName(const AddressSurvey& address) {
    for (std::size_t i = address.steps.size(); i > 0; --i) {
        if (!address.isElement[i - 1]) {
            return address.steps[i - 1];
        }
    }
    return "value";
}

bool CanBeNamed(const SourceSurvey& source, const AddressSurvey& address) {
    return source.IsCsv() ||
           std::find(address.steps.begin(), address.steps.end(), "") == address.steps.end();
}

std::string LowerLastName(const AddressSurvey& address) {
    std::string name = LastName(address);
    std::transform(name.begin(), name.end(), name.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return name;
}

std::size_t KeyRank(const AddressSurvey& address) {
    static constexpr std::array<std::string_view, 10> kNames = {
        "id", "key", "number", "nr", "no", "code", "login", "uuid", "guid", "name"};
    const std::string name = LowerLastName(address);
    const auto* const known = std::find(kNames.begin(), kNames.end(), name);
    const std::size_t rank = known != kNames.end()
                                 ? static_cast<std::size_t>(known - kNames.begin())
                             : name.ends_with("id") ? kNames.size()
                                                    : kNames.size() + 1;
    return rank + address.steps.size() * (kNames.size() + 2);
}

bool CanBeKey(const AddressSurvey& address) {
    return address.IsUnique() && address.IsScalarOnly() && address.severalLines == 0 &&
           address.longest <= kLongestKeyText && address.dates.Dates() == 0 && address.words == 0;
}

bool IsKey(const SourceSurvey& source, const AddressSurvey& address) {
    return address.IsUnique() && address.IsScalarOnly() && !address.IsInList() &&
           address.Values() == source.rows && address.severalLines == 0;
}

}  // namespace tool
