#include "recorddb/store/batch/key_sets.h"

#include <algorithm>

namespace recorddb {

std::vector<FieldSet> UniqueSetsOf(const schema::RecordType& type) {
    const auto isFilledIn = [&type](std::size_t field) {
        const schema::FieldKind kind = type.fields[field].kind;
        return kind == schema::FieldKind::DbId || kind == schema::FieldKind::DisplayId;
    };
    std::vector<FieldSet> sets;
    if (std::none_of(type.key.begin(), type.key.end(), isFilledIn)) {
        sets.push_back(type.key);
    }
    for (const schema::Field& field : type.fields) {
        const bool isKey = type.key.size() == 1 && type.key.front() == field.index;
        if (field.unique && !isKey && !isFilledIn(field.index)) {
            sets.push_back({field.index});
        }
    }
    return sets;
}

std::vector<FieldSet> KeySetsOf(const schema::RecordType& type) {
    std::vector<FieldSet> sets = UniqueSetsOf(type);
    if (std::find(sets.begin(), sets.end(), type.key) == sets.end()) {
        sets.push_back(type.key);
    }
    return sets;
}

}  // namespace recorddb
