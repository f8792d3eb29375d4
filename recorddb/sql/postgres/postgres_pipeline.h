#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_PIPELINE_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_PIPELINE_H

#include <string>
#include <vector>

#include "recorddb/sql/postgres/postgres_parameters.h"
#include "recorddb/sql/postgres/postgres_result.h"

struct pg_conn;

namespace recorddb::sql {

// Statements that go to the server one behind the other without waiting for the answers, so that
// all of them cost one round trip. From the first one to Finish nothing else may be run on the
// connection.
class PostgresPipeline {
  public:
    // The connection outlives it.
    explicit PostgresPipeline(pg_conn* connection) : m_connection(connection) {}
    PostgresPipeline(const PostgresPipeline&) = delete;
    PostgresPipeline& operator=(const PostgresPipeline&) = delete;

    // Waits for what is under way, whatever comes of it.
    ~PostgresPipeline() { Leave(); }

    // Sends a statement that was prepared under a name, from that text. The parameters are copied.
    // Throws Error when it cannot be sent.
    void Send(const std::string& name, const PostgresParameters& parameters,
              const std::string& sql);

    // Sends one statement that has no parameters. Throws Error when it cannot be sent.
    void SendOnce(const std::string& sql);

    // Returns the answers in their order. Throws Error for the first statement that the server
    // refuses; it passes over the later ones. The connection can be used again then.
    std::vector<PostgresResult> Finish();

  private:
    void Enter();
    void NoteSent(int sent, const std::string& sql);
    std::vector<PostgresResult> TakeAnswers();
    void Leave() noexcept;

    pg_conn* m_connection;
    bool m_isOpen = false;
    bool m_isSynced = false;          // the server has been asked to answer all
    std::vector<std::string> m_sent;  // the statements' texts
};

}  // namespace recorddb::sql

#endif
