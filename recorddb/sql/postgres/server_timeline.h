#ifndef RECORDDB_SQL_POSTGRES_SERVER_TIMELINE_H
#define RECORDDB_SQL_POSTGRES_SERVER_TIMELINE_H

#include <cstdint>
#include <string>

#include "recorddb/sql/postgres/postgres_handle.h"

namespace recorddb::sql {

// Where a server stands in the history of its cluster. A standby that takes over begins a new
// timeline, with a higher number; the former primary, started again, goes on with the old one and
// lacks what was written since.
struct ServerTimeline {
    std::string cluster;      // the same for a primary and its standbys; empty: not known
    std::int64_t number = 0;  // 0: not known

    bool IsOlderThan(const ServerTimeline& other) const {
        return cluster == other.cluster && number != 0 && number < other.number;
    }
};

// That of a server that takes changes. Nothing is known of one that does not take any, of one that
// does not let the role ask (pg_control_system), and of one that refuses to say. Throws Error.
ServerTimeline TimelineOf(PostgresHandle& handle);

}  // namespace recorddb::sql

#endif
