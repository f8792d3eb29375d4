#ifndef RECORDDB_STORE_BATCH_DATABASE_BATCH_H
#define RECORDDB_STORE_BATCH_DATABASE_BATCH_H

#include "recorddb/database.h"

namespace recorddb {

// What the transaction under way on a database has gathered, which programs have no use for.
struct DatabaseBatch {
    // It lives as long as the database.
    static WriteBatch& Of(Database& database) { return *database.m_batch; }
};

}  // namespace recorddb

#endif
