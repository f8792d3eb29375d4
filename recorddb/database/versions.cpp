#include "recorddb/versions.h"

#include "recorddb/sql/postgres/libpq_version.h"
#include "recorddb/sql/sqlite/sqlite_version.h"
#include "recorddb/store/tables/stored_schema.h"

namespace recorddb {

Versions GetVersions() {
    return {.format = schema::kFormatVersion,
            .oldestFormat = schema::kOldestFormat,
            .sqlite = sql::SqliteVersion(),
            .libpq = sql::LibpqVersion()};
}

}  // namespace recorddb
