#include "recorddb/sql/sqlite/sqlite_version.h"

#include <sqlite3.h>

namespace recorddb::sql {

std::string SqliteVersion() {
    return sqlite3_libversion();
}

}  // namespace recorddb::sql
