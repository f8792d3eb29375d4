#ifndef RECORDDB_SQL_POSTGRES_SERVER_URL_H
#define RECORDDB_SQL_POSTGRES_SERVER_URL_H

#include <string>
#include <string_view>

namespace recorddb::sql {

// The URL of a database on a server, taken apart.
struct ServerUrl {
    std::string connection;  // the URL as the client library takes it
    std::string schema;      // the parameter `schema`, which is ours; empty when it is not given
    std::string shown;       // the URL for messages, without user, password and what may hold one
};

// Takes a URL apart. Throws Error (CannotOpen) when one of our own parameters cannot be read, or
// when the password seems to hold characters that a URL takes for its own; the rest is for the
// client library to judge.
ServerUrl ReadServerUrl(std::string_view url);

// The URL with the parameter `schema`, in the place of the one that it may have.
std::string UrlWithSchema(std::string_view url, std::string_view schema);

}  // namespace recorddb::sql

#endif
