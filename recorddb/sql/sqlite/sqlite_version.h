#ifndef RECORDDB_SQL_SQLITE_SQLITE_VERSION_H
#define RECORDDB_SQL_SQLITE_SQLITE_VERSION_H

#include <string>

namespace recorddb::sql {

// The version of the library that is loaded.
std::string SqliteVersion();

}  // namespace recorddb::sql

#endif
