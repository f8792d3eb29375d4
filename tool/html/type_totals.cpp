#include "tool/html/type_totals.h"

#include <algorithm>

#include "tool/html/html_text.h"

namespace tool {

namespace {

constexpr std::size_t kTypesKept = 200;
constexpr std::size_t kTypeNameLimit = 200;

}  // namespace

void TypeTotalsList::Add(const std::string& type, ImportedData data, const LoadTotals& more) {
    const std::string name = Clipped(type, kTypeNameLimit);
    auto found = std::find_if(m_types.begin(), m_types.end(), [&](const TypeTotals& totals) {
        return totals.type == name && totals.data == data;
    });
    if (found == m_types.end() && m_types.size() <= kTypesKept) {
        const bool isLast = m_types.size() == kTypesKept;
        found = m_types.insert(m_types.end(),
                               isLast ? TypeTotals{"other record types", ImportedData::Nothing, {}}
                                      : TypeTotals{name, data, {}});
    } else if (found == m_types.end()) {
        found = m_types.end() - 1;
    }
    tool::Add(found->totals, more);
}

LoadTotals TypeTotalsList::Sum() const {
    LoadTotals sum;
    for (const TypeTotals& type : m_types) {
        tool::Add(sum, type.totals);
    }
    return sum;
}

}  // namespace tool
