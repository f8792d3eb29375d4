#include "recorddb/sql/postgres/postgres_pipeline.h"

#include <libpq-fe.h>
#include <sys/socket.h>

#include <cstddef>
#include <utility>

#include "recorddb/errors.h"
#include "recorddb/sql/postgres/postgres_error.h"

namespace recorddb::sql {

void PostgresPipeline::Enter() {
    if (!m_isOpen && PQenterPipelineMode(m_connection) == 0) {
        throw PostgresError(m_connection, nullptr, "");
    }
    m_isOpen = true;
}

// While it waits for room to send, libpq reads what the server answers, so neither blocks the
// other.
void PostgresPipeline::Send(const std::string& name, const PostgresParameters& parameters,
                            const std::string& sql) {
    Enter();
    NoteSent(
        PQsendQueryPrepared(m_connection, name.c_str(), parameters.Count(), parameters.Values(),
                            parameters.Lengths(), parameters.Formats(), 0),
        sql);
}

void PostgresPipeline::SendOnce(const std::string& sql) {
    Enter();
    NoteSent(PQsendQueryParams(m_connection, sql.c_str(), 0, nullptr, nullptr, nullptr, nullptr, 0),
             sql);
}

void PostgresPipeline::NoteSent(int sent, const std::string& sql) {
    m_sent.push_back(sql);
    if (sent == 0) {
        const Error error = PostgresError(m_connection, nullptr, sql);
        Leave();
        throw error;
    }
}

std::vector<PostgresResult> PostgresPipeline::Finish() {
    if (!m_isOpen) {
        return {};
    }
    try {
        m_isSynced = PQpipelineSync(m_connection) != 0;
        std::vector<PostgresResult> answers = TakeAnswers();
        Leave();
        return answers;
    } catch (...) {
        Leave();
        throw;
    }
}

// Behind the answers to each statement stands a null pointer.
std::vector<PostgresResult> PostgresPipeline::TakeAnswers() {
    std::vector<PostgresResult> answers;
    for (const std::string& sql : m_sent) {
        while (pg_result* const raw = PQgetResult(m_connection)) {
            answers.emplace_back(raw);
            if (PQresultStatus(raw) != PGRES_COMMAND_OK && PQresultStatus(raw) != PGRES_TUPLES_OK) {
                throw PostgresError(m_connection, raw, sql);
            }
        }
    }
    if (answers.size() != m_sent.size()) {
        throw PostgresError(m_connection, nullptr, m_sent.back());
    }
    return answers;
}

// Where the server has ended the connection in the middle, libpq may wait for answers that never
// come, and take the connection for good all the same; then it is cut here.
void PostgresPipeline::Leave() noexcept {
    if (!std::exchange(m_isOpen, false)) {
        return;
    }
    // An answer and its end for each statement, and one for the whole, with some to spare.
    std::size_t left = 2 * m_sent.size() + 8;
    m_sent.clear();
    if (!std::exchange(m_isSynced, false)) {
        PQpipelineSync(m_connection);
    }
    while (PQstatus(m_connection) == CONNECTION_OK && PQexitPipelineMode(m_connection) == 0) {
        if (left-- == 0) {
            shutdown(PQsocket(m_connection), SHUT_RDWR);
            PQconsumeInput(m_connection);
            return;
        }
        PQclear(PQgetResult(m_connection));
    }
}

}  // namespace recorddb::sql
