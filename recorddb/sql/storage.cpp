#include "recorddb/sql/storage.h"

#include <stdexcept>

namespace recorddb::sql {

Storage StorageOf(const Statement& row, int column) {
    const auto* const teller = dynamic_cast<const StorageTeller*>(&row);
    if (teller == nullptr) {
        throw std::logic_error("the engine does not say how values are stored");
    }
    return teller->StorageOf(column);
}

}  // namespace recorddb::sql
