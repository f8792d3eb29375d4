#include "recorddb/errors.h"
#include "recorddb/sql.h"
#include "recorddb/sql/postgres/postgres_connection.h"
#include "recorddb/sql/postgres/server_url.h"
#include "recorddb/sql/sqlite/sqlite_connection.h"

namespace recorddb::sql {

bool IsServerUrl(const std::string& location) {
    return location.starts_with("postgresql://") || location.starts_with("postgres://");
}

std::unique_ptr<Connection> Open(const std::string& location, OpenMode mode) {
    return IsServerUrl(location) ? PostgresConnection::Open(location, mode)
                                 : SqliteConnection::Open(location, mode);
}

std::string ShownLocation(const std::string& location) {
    return IsServerUrl(location) ? ReadServerUrl(location).shown : location;
}

std::string WithSchema(const std::string& url, const std::string& schema) {
    return UrlWithSchema(url, schema);
}

std::vector<std::string> SideFiles(const std::string& location) {
    return IsServerUrl(location) ? std::vector<std::string>()
                                 : SqliteConnection::SideFiles(location);
}

std::unique_ptr<Connection> OpenScratch(Undoing undoing) {
    return SqliteConnection::OpenScratch(undoing);
}

}  // namespace recorddb::sql
