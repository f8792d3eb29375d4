#include "tool/survey/draft_order.h"

#include <algorithm>
#include <cstddef>
#include <set>

namespace tool {

namespace {

bool IsReady(const DraftType& type, std::size_t self, const std::set<std::size_t>& placed) {
    return std::all_of(type.fields.begin(), type.fields.end(), [&](const DraftField& field) {
        return !field.reference || field.reference->type == self ||
               placed.contains(field.reference->type);
    });
}

}  // namespace

void SortTypes(Draft& draft) {
    std::set<std::size_t> placed;
    while (placed.size() < draft.types.size()) {
        std::size_t next = draft.types.size();
        for (std::size_t type = 0; type < draft.types.size(); ++type) {
            if (placed.contains(type)) {
                continue;
            }
            next = std::min(next, type);
            if (IsReady(draft.types[type], type, placed)) {
                next = type;
                break;
            }
        }
        for (DraftField& field : draft.types[next].fields) {
            if (field.reference && !placed.contains(field.reference->type)) {
                field.reference->isLate = true;
            }
        }
        placed.insert(next);
        draft.order.push_back(next);
    }
}

}  // namespace tool
