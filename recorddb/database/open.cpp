#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/sql/sqlite/sqlite_connection.h"

namespace recorddb::sql {

bool IsServerUrl(const std::string& location) {
    return location.starts_with("postgresql://") || location.starts_with("postgres://");
}

std::unique_ptr<Connection> Open(const std::string& location, OpenMode mode) {
    if (IsServerUrl(location)) {
        // The URL may hold a password, so it stays out of the text.
        throw Error(ErrorKind::Unsupported,
                    "PostgreSQL databases are not supported; give the path of an SQLite file", "");
    }
    return SqliteConnection::Open(location, mode);
}

std::vector<std::string> SideFiles(const std::string& location) {
    return IsServerUrl(location) ? std::vector<std::string>()
                                 : SqliteConnection::SideFiles(location);
}

std::unique_ptr<Connection> OpenScratch() {
    return SqliteConnection::OpenScratch();
}

}  // namespace recorddb::sql
