#include "recorddb/sql/postgres/server_timeline.h"

#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

// What the question below calls, which a provider may have taken from its customers' roles.
constexpr const char* kMayAsk =
    "SELECT bool_and(coalesce(has_function_privilege(to_regprocedure(f), 'EXECUTE'), false)) "
    "FROM unnest(ARRAY['pg_control_system()', 'pg_walfile_name(pg_lsn)', "
    "'pg_current_wal_lsn()']) AS f";

// The first eight digits of the name of the log file that is written to are the timeline. What the
// control file says of it comes later, with a checkpoint.
ServerTimeline Ask(PostgresHandle& handle) {
    if (handle.Run(kMayAsk).Int(0, 0) == 0) {
        return {};
    }
    const PostgresResult found = handle.Run(
        "SELECT system_identifier::text, "
        "('x' || left(pg_walfile_name(pg_current_wal_lsn()), 8))::bit(32)::bigint "
        "FROM pg_control_system() WHERE NOT pg_is_in_recovery()");
    if (found.RowCount() == 0) {
        return {};
    }
    return {.cluster = std::string(found.Text(0, 0)), .number = found.Int(0, 1)};
}

}  // namespace

// Engines that only speak as the server does may have no timelines, and say so by refusing.
ServerTimeline TimelineOf(PostgresHandle& handle) {
    try {
        return Ask(handle);
    } catch (const Error& error) {
        if (error.Kind() != ErrorKind::Unsupported && error.Kind() != ErrorKind::PermissionDenied) {
            throw;
        }
        return {};
    }
}

}  // namespace recorddb::sql
