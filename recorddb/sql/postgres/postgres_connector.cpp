#include "recorddb/sql/postgres/postgres_connector.h"

#include <fmt/format.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

constexpr int kOldestServer = 130000;

// Set on every connection. Only of lock_timeout, what the user has set for the connection
// (`options`) is kept.
//
// lock_timeout: how long a writer waits for another one, unless the user has set it. Loads commit
// often, so the lock becomes free many times within this.
//
// enable_seqscan, enable_hashjoin, enable_mergejoin: every look-up has its index. Plans are kept
// for the life of a statement, and the first of them are made while the tables are empty, when
// reading all of a table looks cheap; a load would stay slow from then on. With sequential scans
// off, the cost of a query that needs one looks enormous, and the server would compile it: so jit
// is off.
//
// idle_in_transaction_session_timeout: those who compare hold a moment for as long as they read the
// sources.
//
// bytea_output: what PostgresResult reads.
//
// Where tables are spread (kSpreadTablesSettings), plans are made with the values, which say on
// which machine a row stands; and statements about several machines take one connection to each,
// since changes of tables that stand everywhere must be seen by those that rely on them. The second
// setting is Citus'; other servers take it and do nothing with it.
constexpr const char* kConnectionSettings =
    "SELECT set_config('lock_timeout', '10s', false) WHERE current_setting('lock_timeout') = '0';"
    "SET enable_seqscan = off;"
    "SET enable_hashjoin = off;"
    "SET enable_mergejoin = off;"
    "SET jit = off;"
    "SET idle_in_transaction_session_timeout = 0;"
    "SET plan_cache_mode = force_generic_plan;"
    "SET bytea_output = 'hex'";

[[noreturn]] void CannotOpen(const std::string& why) {
    throw Error(ErrorKind::CannotOpen, why, "");
}

// The schema that a connection is to work in, as its role may use it.
struct Schema {
    std::string name;
    std::string database;
    std::string role;
    bool exists = false;
    bool mayUse = false;
    bool mayMakeTables = false;
    bool mayMakeSchemas = false;
};

Schema FindSchema(PostgresHandle& handle, const std::string& wanted) {
    PostgresParameters parameters(1);
    if (!wanted.empty()) {
        parameters.SetText(1, wanted);
    }
    const PostgresResult found = handle.RunOnce(
        "SELECT s.name, current_database(), current_user, n.oid IS NOT NULL, "
        "has_schema_privilege(n.oid, 'USAGE'), has_schema_privilege(n.oid, 'CREATE'), "
        "has_database_privilege(current_database(), 'CREATE') "
        "FROM (SELECT coalesce($1::text, current_schema()::text) AS name) AS s "
        "LEFT JOIN pg_namespace AS n ON n.nspname::text = s.name",
        parameters);
    enum Column { kName, kDatabase, kRole, kExists, kMayUse, kMayMakeTables, kMayMakeSchemas };
    return {.name = std::string(found.Text(0, kName)),
            .database = std::string(found.Text(0, kDatabase)),
            .role = std::string(found.Text(0, kRole)),
            .exists = found.Int(0, kExists) != 0,
            .mayUse = found.Int(0, kMayUse) != 0,
            .mayMakeTables = found.Int(0, kMayMakeTables) != 0,
            .mayMakeSchemas = found.Int(0, kMayMakeSchemas) != 0};
}

[[noreturn]] void LacksRight(const Schema& schema, std::string_view right, std::string_view kind,
                             const std::string& name) {
    throw Error(ErrorKind::PermissionDenied,
                fmt::format("the role {0} lacks the right {1} on the {2} {3}; it takes: GRANT {1} "
                            "ON {4} {3} TO {0}",
                            Quoted(schema.role), right, kind, Quoted(name),
                            kind == "database" ? "DATABASE" : "SCHEMA"),
                "");
}

void CheckSchema(const Schema& schema, bool create) {
    constexpr std::size_t longest = 63;
    if (schema.name.empty()) {
        CannotOpen(
            "there is no schema that the search path names; name one with --schema, or with "
            "schema=NAME in the URL");
    }
    if (schema.name.size() > longest) {
        CannotOpen(fmt::format("the name of the schema has {} bytes, and the server takes {}",
                               schema.name.size(), longest));
    }
    if (!schema.exists && !create) {
        CannotOpen(
            fmt::format("there is no schema {} in the database {}; make the record database "
                        "first, or check the name",
                        Quoted(schema.name), Quoted(schema.database)));
    }
    if (!schema.exists && !schema.mayMakeSchemas) {
        LacksRight(schema, "CREATE", "database", schema.database);
    }
    if (schema.exists && !schema.mayUse) {
        LacksRight(schema, "USAGE", "schema", schema.name);
    }
    if (schema.exists && create && !schema.mayMakeTables) {
        LacksRight(schema, "CREATE", "schema", schema.name);
    }
}

// A number for a name, for the server's locks, which go by numbers (FNV-1a). Two schemas of one
// number would only wait for each other.
std::int32_t LockNumber(std::string_view name) {
    std::uint32_t number = 2166136261U;
    for (const char character : name) {
        number = (number ^ static_cast<unsigned char>(character)) * 16777619U;
    }
    return static_cast<std::int32_t>(number);
}

// The first of the two numbers of our locks.
constexpr int kOurLocks = 0x5A545244;

// What begins a transaction. Readers see one moment. Writers take turns, by a lock that ends with
// the transaction; each then sees what the one before has committed, which a snapshot from before
// the wait would not show.
std::string BeginOf(const Schema& schema, bool readOnly, const std::string& takeTurn) {
    if (readOnly) {
        return std::string(PostgresConnector::kBeginReading);
    }
    if (!takeTurn.empty()) {
        return "BEGIN ISOLATION LEVEL READ COMMITTED READ WRITE; " + takeTurn;
    }
    std::string begin = fmt::format(
        "BEGIN ISOLATION LEVEL READ COMMITTED READ WRITE; "
        "SELECT pg_advisory_xact_lock({}, {})",
        kOurLocks, LockNumber(schema.name));
    if (!schema.exists) {
        begin += "; CREATE SCHEMA IF NOT EXISTS " + Quoted(schema.name);
    }
    return begin;
}

// Ends the connection's own former one, if the server still has it: after a failure of the network
// it may hold the lock of the schema for hours.
void EndFormer(PostgresHandle& handle, const std::string& backend) {
    PostgresParameters parameters(1);
    parameters.SetText(1, backend);
    handle.RunOnce(
        "SELECT pg_terminate_backend(pid) FROM pg_stat_activity "
        "WHERE pid || ' ' || extract(epoch FROM backend_start) = $1::text",
        parameters);
}

// Process id and start time of the backend that serves a connection: no other backend has both.
std::string BackendOf(PostgresHandle& handle) {
    const PostgresResult own = handle.Run(
        "SELECT pid || ' ' || extract(epoch FROM backend_start) FROM pg_stat_activity "
        "WHERE pid = pg_backend_pid()");
    return own.RowCount() == 0 ? std::string() : std::string(own.Text(0, 0));
}

}  // namespace

void CheckServer(int version, std::string_view name, std::string_view encoding) {
    if (version < kOldestServer) {
        CannotOpen(fmt::format("the server is PostgreSQL {}; it takes version 13 or later", name));
    }
    if (encoding != "UTF8") {
        CannotOpen(
            fmt::format("the database has the encoding {}, which cannot hold all texts; "
                        "make one with: CREATE DATABASE name ENCODING 'UTF8' TEMPLATE "
                        "template0",
                        encoding));
    }
}

PostgresConnector::PostgresConnector(const std::string& url, OpenMode mode)
    : m_url(ReadServerUrl(url)), m_mode(mode) {}

PostgresHandle PostgresConnector::Connect(std::optional<std::chrono::milliseconds> patience) {
    const auto until =
        patience ? Until(std::chrono::steady_clock::now() + *patience) : std::nullopt;
    try {
        return ConnectUnnamed(until);
    } catch (const Error& error) {
        throw Error(error.Kind(), m_url.shown + ": " + error.DriverText(), error.Sql());
    }
}

// A former primary that was started again lacks what was written since, and takes changes all the
// same. Where the URL names other servers, one of them is the primary.
PostgresHandle PostgresConnector::ConnectToCurrent(Until until) {
    ServerHosts servers(m_url.connection);
    std::string refusal;
    for (;;) {
        PostgresHandle handle = ConnectToOneOf(servers, until, refusal);
        CheckServer(handle.ServerVersion(), handle.Setting("server_version"),
                    handle.Setting("server_encoding"));
        const ServerTimeline timeline = IsReadOnly() ? ServerTimeline() : TimelineOf(handle);
        if (!timeline.IsOlderThan(m_timeline)) {
            m_timeline = timeline.number != 0 ? timeline : m_timeline;
            return handle;
        }
        refusal += fmt::format(
            "{}the server at {} is a former primary that was started again: it stands in the "
            "timeline {}, and timeline {} was written to before",
            refusal.empty() ? "" : "; ", PlaceOf(handle), timeline.number, m_timeline.number);
        if (!servers.LeaveOut(handle)) {
            CannotOpen(refusal);
        }
    }
}

PostgresHandle PostgresConnector::ConnectToOneOf(const ServerHosts& servers, Until until,
                                                 const std::string& refusal) const {
    std::optional<std::chrono::milliseconds> patience;
    if (until) {
        patience = std::chrono::duration_cast<std::chrono::milliseconds>(
            *until - std::chrono::steady_clock::now());
    }
    try {
        return servers.Connect(!IsReadOnly(), patience);
    } catch (const Error& error) {
        throw Error(error.Kind(), error.DriverText() + (refusal.empty() ? "" : "; and " + refusal),
                    error.Sql());
    }
}

PostgresHandle PostgresConnector::ConnectUnnamed(Until until) {
    if (m_mode == OpenMode::Immutable) {
        throw Error(ErrorKind::Unsupported,
                    "a database on a server can always be read; leave --immutable out", "");
    }
    PostgresHandle handle = ConnectToCurrent(until);
    if (!m_backend.empty()) {
        EndFormer(handle, m_backend);
    }
    const Schema schema = FindSchema(handle, m_url.schema);
    CheckSchema(schema, m_mode == OpenMode::CreateNew);
    handle.Run(kConnectionSettings);
    handle.Run("SET search_path TO " + Quoted(schema.name));
    handle.Run(fmt::format("SET default_transaction_read_only = {}", IsReadOnly() ? "on" : "off"));
    if (ExpectsSpreadTables()) {
        handle.Run(kSpreadTablesSettings);
    }
    m_begin = BeginOf(schema, IsReadOnly(), m_takeTurn);
    m_lock = LockNumber(schema.name);
    m_backend = BackendOf(handle);
    return handle;
}

void PostgresConnector::ExpectSpreadTables(std::string_view takeTurn) {
    m_takeTurn = takeTurn;
    m_begin = BeginOf({}, IsReadOnly(), m_takeTurn);
}

std::string PostgresConnector::LockSql() const {
    return fmt::format("SELECT pg_advisory_lock({}, {})", kOurLocks, m_lock);
}

std::string PostgresConnector::UnlockSql() const {
    return fmt::format("SELECT pg_advisory_unlock({}, {})", kOurLocks, m_lock);
}

std::string PostgresConnector::WaitsSql() const {
    return fmt::format(
        "SELECT EXISTS (SELECT FROM pg_locks WHERE locktype = 'advisory' AND NOT granted "
        "AND classid = {} AND objid = {} AND objsubid = 2 "
        "AND database = (SELECT oid FROM pg_database WHERE datname = current_database()))",
        kOurLocks, static_cast<std::uint32_t>(m_lock));
}

}  // namespace recorddb::sql
