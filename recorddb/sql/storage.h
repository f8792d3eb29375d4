#ifndef RECORDDB_SQL_STORAGE_H
#define RECORDDB_SQL_STORAGE_H

#include "recorddb/sql.h"

namespace recorddb::sql {

// How a value is stored. An engine need not hold a column to the type that was declared for it.
enum class Storage { Null, Integer, Real, Text, Blob };

// Implemented by the statements of engines that can say how a value is stored.
class StorageTeller {
  public:
    StorageTeller() = default;
    StorageTeller(const StorageTeller&) = delete;
    StorageTeller& operator=(const StorageTeller&) = delete;
    virtual ~StorageTeller() = default;

    virtual Storage StorageOf(int column) const = 0;
};

// How the value in a column of the current row is stored, whatever it reads as. To be asked before
// the value is read, which may convert it. Throws std::logic_error when the statement's engine
// cannot say.
Storage StorageOf(const Statement& row, int column);

}  // namespace recorddb::sql

#endif
