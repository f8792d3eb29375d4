#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_HANDLE_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_HANDLE_H

#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "recorddb/sql/postgres/postgres_parameters.h"
#include "recorddb/sql/postgres/postgres_pipeline.h"
#include "recorddb/sql/postgres/postgres_result.h"

struct pg_conn;

namespace recorddb::sql {

// A connection of libpq and the calls on it, with their answers checked: each throws Error for what
// the server refuses, and when the connection is lost. Statements may be left to be sent, or their
// answers to be waited for, with the next call; that one throws what becomes of them, too.
class PostgresHandle {
  public:
    // Where the server stands. In a failed transaction it takes nothing but a roll-back.
    enum class State { Idle, InTransaction, InFailedTransaction, Lost };

    // Takes over a connection that has been made.
    explicit PostgresHandle(pg_conn* connection);

    // Runs statements without parameters, separated by semicolons; returns what the last one gave.
    PostgresResult Run(const std::string& sql);

    // Runs one statement once.
    PostgresResult RunOnce(const std::string& sql, const PostgresParameters& parameters);

    // Prepares one statement under a name and returns what parameters and columns it has.
    PostgresResult Prepare(const std::string& name, const std::string& sql);

    // Runs a statement that was prepared under a name, from that text.
    PostgresResult RunPrepared(const std::string& name, const PostgresParameters& parameters,
                               const std::string& sql);

    // Sends such a statement and leaves its answer to the next call.
    void SendPrepared(const std::string& name, const PostgresParameters& parameters,
                      const std::string& sql);

    // Leaves it to the next call to run a statement that has no parameters and returns nothing.
    void Defer(std::string sql) { m_deferred.push_back(std::move(sql)); }
    // The last one of those that are left, empty when there is none or statements were sent since.
    std::string_view LastDeferred() const;
    void DropLastDeferred() { m_deferred.pop_back(); }
    // True while answers to statements that were sent are left.
    bool AwaitsAnswers() const { return m_sent != nullptr; }

    // Sends the deferred statements and waits for all answers. Throws Error.
    void Settle();
    // Drops the deferred statements, and the answers to those that were sent.
    void GiveUpLeft() noexcept;

    // Drops a prepared statement, where that can be done now; a server forgets all of them with the
    // connection.
    void Forget(const std::string& name) noexcept;

    // A name that nothing else on this connection has.
    std::string NewName() { return "zt_" + std::to_string(++m_names); }

    State GetState() const;

    // What the server says of itself and of the connection, empty when it says nothing.
    std::string_view Setting(const char* name) const;
    int ServerVersion() const;

    // For what libpq tells of the connection, and for what it does beyond these calls, with nothing
    // left. It stays the handle's.
    pg_conn* Raw() const { return m_connection.get(); }
    pg_conn* Settled() {
        Settle();
        return m_connection.get();
    }

    // Ends the connection. What follows fails as on one that was lost.
    void Close() noexcept;

    // Takes over another handle's connection in the place of its own.
    void TakeOver(PostgresHandle fresh);

    // How often another connection was taken over. What was prepared before is not there any more.
    int Generation() const { return m_generation; }

  private:
    struct Closer {
        void operator()(pg_conn* connection) const noexcept;
    };

    PostgresResult Checked(pg_result* raw, std::string_view sql);
    PostgresPipeline& Sending();
    std::vector<PostgresResult> FinishSent();

    std::unique_ptr<pg_conn, Closer> m_connection;
    std::vector<std::string> m_deferred;       // come after what was sent
    std::unique_ptr<PostgresPipeline> m_sent;  // statements whose answers are left
    long m_names = 0;
    int m_generation = 0;
};

}  // namespace recorddb::sql

#endif
