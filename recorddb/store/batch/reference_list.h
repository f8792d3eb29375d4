#ifndef RECORDDB_STORE_BATCH_REFERENCE_LIST_H
#define RECORDDB_STORE_BATCH_REFERENCE_LIST_H

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "recorddb/model/field_value.h"

namespace recorddb {

// The list that a value holds; empty for no value.
inline const ReferenceList& ListIn(const FieldValue& value) {
    static const ReferenceList kEmpty;
    const auto* const list = std::get_if<ReferenceList>(&value);
    return list != nullptr ? *list : kEmpty;
}

// How many targets both lists begin with.
inline std::size_t CommonLength(const ReferenceList& before, const ReferenceList& after) {
    const auto ends = std::mismatch(before.begin(), before.end(), after.begin(), after.end());
    return static_cast<std::size_t>(std::distance(before.begin(), ends.first));
}

}  // namespace recorddb

#endif
