#ifndef RECORDDB_SQL_POSTGRES_CONNECTION_OPTIONS_H
#define RECORDDB_SQL_POSTGRES_CONNECTION_OPTIONS_H

#include <functional>
#include <map>
#include <string>
#include <string_view>

struct pg_conn;

namespace recorddb::sql {

// Parameters of a connection by libpq's keywords. A URL says some of them; libpq takes others from
// the service that URL or environment name, then from the environment, then its own defaults.
class ConnectionOptions {
  public:
    // What a URL itself says. Throws Error (CannotOpen) when it cannot be read.
    static ConnectionOptions InUrl(const std::string& url);

    // All that libpq would take to connect to a URL, without a word to any server. Where libpq
    // cannot find that out, nothing is said; connecting then tells why.
    static ConnectionOptions ForUrl(const std::string& url);

    // What a connection was made with.
    static ConnectionOptions Of(pg_conn* connection);

    // Empty where nothing is said.
    std::string Value(std::string_view keyword) const;
    bool Says(std::string_view keyword) const { return !Value(keyword).empty(); }

  private:
    std::map<std::string, std::string, std::less<>> m_values;
};

}  // namespace recorddb::sql

#endif
