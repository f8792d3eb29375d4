#include "recorddb/sql/postgres/server_timeline.h"

#include "recorddb/errors.h"

namespace recorddb::sql {

// The first eight digits of the name of the log file that is written to are the timeline. What the
// control file says of it comes later, with a checkpoint.
ServerTimeline TimelineOf(PostgresHandle& handle) {
    try {
        const PostgresResult found = handle.Run(
            "SELECT system_identifier::text, "
            "('x' || left(pg_walfile_name(pg_current_wal_lsn()), 8))::bit(32)::bigint "
            "FROM pg_control_system()");
        return {.cluster = std::string(found.Text(0, 0)), .number = found.Int(0, 1)};
    } catch (const Error& error) {
        if (error.Kind() == ErrorKind::ConnectionLost) {
            throw;
        }
        return {};
    }
}

}  // namespace recorddb::sql
