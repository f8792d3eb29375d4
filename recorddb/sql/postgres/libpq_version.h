#ifndef RECORDDB_SQL_POSTGRES_LIBPQ_VERSION_H
#define RECORDDB_SQL_POSTGRES_LIBPQ_VERSION_H

#include <string>

namespace recorddb::sql {

// The version of the library that is loaded.
std::string LibpqVersion();

}  // namespace recorddb::sql

#endif
