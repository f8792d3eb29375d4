#ifndef RECORDDB_SQL_SQLITE_SQLITE_ERROR_H
#define RECORDDB_SQL_SQLITE_SQLITE_ERROR_H

#include <string>
#include <string_view>

#include "recorddb/errors.h"

struct sqlite3;

namespace recorddb::sql {

// The error for an (extended) SQLite result code that just came back from `handle`.
Error SqliteError(sqlite3* handle, int code, std::string_view sql);

// Throws that error unless the code says that all is well.
void CheckSqlite(sqlite3* handle, int code, std::string_view sql);

}  // namespace recorddb::sql

#endif
