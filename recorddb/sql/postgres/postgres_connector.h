#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_CONNECTOR_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_CONNECTOR_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "recorddb/sql.h"
#include "recorddb/sql/postgres/postgres_handle.h"
#include "recorddb/sql/postgres/server_hosts.h"
#include "recorddb/sql/postgres/server_timeline.h"
#include "recorddb/sql/postgres/server_url.h"

namespace recorddb::sql {

// Throws Error (CannotOpen) for a server that is too old, by libpq's number of its version, and for
// a database whose encoding cannot hold all texts. `name` is the version in words.
void CheckServer(int version, std::string_view name, std::string_view encoding);

// Makes connections to one schema of a database on a server: one, and another after that was lost.
// When a standby has taken over meanwhile, it does not go back to the former primary.
class PostgresConnector {
  public:
    // Throws Error (CannotOpen) when one of our own parameters cannot be read in the URL.
    PostgresConnector(const std::string& url, OpenMode mode);

    // Connects, checks that the database can be used in the way that was asked for, and sets the
    // connection up. Ends the connection that was made before, if the server still has it. Where
    // `patience` is given, no longer than that is waited until a server has taken the connection
    // (see ServerHosts); what is asked of it afterwards has no limit. Throws as sql::Open does.
    PostgresHandle Connect(std::optional<std::chrono::milliseconds> patience = {});

    // What begins a transaction that sees one moment and writes nothing.
    static constexpr std::string_view kBeginReading =
        "BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY";

    // What begins a transaction, once Connect has found the schema. Where spread tables are
    // expected, its last statement returns the number of the turn, if it is one for writing.
    const std::string& BeginSql() const { return m_begin; }

    // What takes the writers' lock for the connection, in addition to the transaction that has it;
    // what gives it back; and what asks whether anybody waits for it.
    std::string LockSql() const;
    std::string UnlockSql() const;
    std::string WaitsSql() const;

    // From the next Connect on, connections are set up for tables that may stand spread over
    // machines; see Connection::ExpectSpreadTables.
    void ExpectSpreadTables(std::string_view takeTurn);
    bool ExpectsSpreadTables() const { return !m_takeTurn.empty(); }

    // What sets an open connection up in that way.
    static constexpr const char* kSpreadTablesSettings =
        "SET plan_cache_mode = force_custom_plan;"
        "SET citus.multi_shard_modify_mode = 'sequential'";

    bool IsReadOnly() const { return m_mode == OpenMode::ReadOnly; }

  private:
    // The moment until which servers may be waited for.
    using Until = std::optional<std::chrono::steady_clock::time_point>;

    PostgresHandle ConnectUnnamed(Until until);
    PostgresHandle ConnectToCurrent(Until until);
    PostgresHandle ConnectToOneOf(const ServerHosts& servers, Until until,
                                  const std::string& refusal) const;

    ServerUrl m_url;
    OpenMode m_mode;
    std::string m_begin;
    std::string m_takeTurn;     // empty where writers take turns by the lock of the schema
    std::int32_t m_lock = 0;    // the number of the schema's lock
    ServerTimeline m_timeline;  // that of the latest connection that could write
    std::string m_backend;      // the server's process of the latest connection
};

}  // namespace recorddb::sql

#endif
