#ifndef RECORDDB_WRITTEN_VALUE_H
#define RECORDDB_WRITTEN_VALUE_H

#include <string>

#include "recorddb/schema.h"

namespace recorddb {

// A value by which a record can be found from now on.
struct WrittenValue {
    const schema::RecordType* type = nullptr;
    const schema::Field* field = nullptr;  // null: the unique key of the type
    // In UTF-8: as the database stores it, a key as people write it.
    std::string text;
};

}  // namespace recorddb

#endif
