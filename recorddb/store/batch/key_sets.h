#ifndef RECORDDB_STORE_BATCH_KEY_SETS_H
#define RECORDDB_STORE_BATCH_KEY_SETS_H

#include <cstddef>
#include <vector>

#include "recorddb/schema.h"

namespace recorddb {

// A set of fields, of one or more, by their positions in the type.
using FieldSet = std::vector<std::size_t>;

// The sets of fields in which no two records of a type may have the same values: the key and the
// unique fields, save those that the database fills in itself.
std::vector<FieldSet> UniqueSetsOf(const schema::RecordType& type);

// The sets of fields by which records of a type are found: the key, whatever is in it, and the
// unique sets.
std::vector<FieldSet> KeySetsOf(const schema::RecordType& type);

}  // namespace recorddb

#endif
