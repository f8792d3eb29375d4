#ifndef RECORDDB_SQL_POSTGRES_SERVER_HOSTS_H
#define RECORDDB_SQL_POSTGRES_SERVER_HOSTS_H

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "recorddb/sql/postgres/connection_options.h"
#include "recorddb/sql/postgres/postgres_handle.h"

namespace recorddb::sql {

// The servers that a URL, its service or the environment names for one database, as in a cluster of
// which any may be the one that takes changes. Each has a place in libpq's lists of hosts and
// ports.
class ServerHosts {
  public:
    // Throws Error (CannotOpen) when the URL cannot be read.
    explicit ServerHosts(std::string url);

    // Connects to the first server that answers. When it is one of several and `writes`, those that
    // take no changes are passed over, unless something else is said (target_session_attrs). For
    // one that does not answer, it waits as long as is said (connect_timeout), and where `patience`
    // is given no longer than that, shared among the servers; but two seconds for each in any case,
    // which is the least that libpq waits. Throws Error (CannotOpen).
    PostgresHandle Connect(bool writes,
                           std::optional<std::chrono::milliseconds> patience = {}) const;

    // Leaves the server of a connection out of those that are connected to; false when no other one
    // is left.
    bool LeaveOut(const PostgresHandle& handle);

  private:
    bool SaysWhichServers(const ConnectionOptions& said) const;
    std::size_t Count(const ConnectionOptions& said) const;

    std::string m_url;
    ConnectionOptions m_options;  // what the URL itself says
    // Once one was left out: the others, as libpq takes them.
    bool m_hasLeftOut = false;
    std::string m_hosts;
    std::string m_addresses;
    std::string m_ports;
};

// The server of a connection, for messages.
std::string PlaceOf(const PostgresHandle& handle);

}  // namespace recorddb::sql

#endif
