#include "recorddb/sql/postgres/postgres_handle.h"

#include <libpq-fe.h>

#include "platform/foundation/out_of_memory.h"
#include "recorddb/errors.h"
#include "recorddb/sql/postgres/postgres_error.h"

namespace recorddb::sql {

void PostgresHandle::Closer::operator()(pg_conn* connection) const noexcept {
    PQfinish(connection);
}

PostgresHandle::PostgresHandle(pg_conn* connection) : m_connection(connection) {
    // The server's notices would go to the terminal otherwise.
    PQsetNoticeProcessor(
        connection, [](void*, const char*) {}, nullptr);
}

PostgresResult PostgresHandle::Checked(pg_result* raw, std::string_view sql) {
    PostgresResult result(raw);
    if (raw == nullptr && PQstatus(m_connection.get()) == CONNECTION_OK) {
        ThrowOutOfMemory();
    }
    const ExecStatusType status = PQresultStatus(raw);
    if (status != PGRES_COMMAND_OK && status != PGRES_TUPLES_OK && status != PGRES_EMPTY_QUERY) {
        throw PostgresError(m_connection.get(), raw, sql);
    }
    return result;
}

// Deferred statements go in front of it, in the same message.
PostgresResult PostgresHandle::Run(const std::string& sql) {
    if (m_sent != nullptr) {
        Settle();
    }
    std::string all;
    for (const std::string& deferred : std::exchange(m_deferred, {})) {
        all += deferred + ";";
    }
    return Checked(PQexec(m_connection.get(), (all + sql).c_str()), sql);
}

PostgresResult PostgresHandle::RunOnce(const std::string& sql,
                                       const PostgresParameters& parameters) {
    Settle();
    return Checked(PQexecParams(m_connection.get(), sql.c_str(), parameters.Count(), nullptr,
                                parameters.Values(), parameters.Lengths(), parameters.Formats(), 0),
                   sql);
}

PostgresResult PostgresHandle::Prepare(const std::string& name, const std::string& sql) {
    Settle();
    Checked(PQprepare(m_connection.get(), name.c_str(), sql.c_str(), 0, nullptr), sql);
    return Checked(PQdescribePrepared(m_connection.get(), name.c_str()), sql);
}

PostgresResult PostgresHandle::RunPrepared(const std::string& name,
                                           const PostgresParameters& parameters,
                                           const std::string& sql) {
    if (m_sent != nullptr || !m_deferred.empty()) {
        Sending().Send(name, parameters, sql);
        return std::move(FinishSent().back());
    }
    return Checked(
        PQexecPrepared(m_connection.get(), name.c_str(), parameters.Count(), parameters.Values(),
                       parameters.Lengths(), parameters.Formats(), 0),
        sql);
}

void PostgresHandle::SendPrepared(const std::string& name, const PostgresParameters& parameters,
                                  const std::string& sql) {
    Sending().Send(name, parameters, sql);
}

// With what was deferred.
PostgresPipeline& PostgresHandle::Sending() {
    if (m_sent == nullptr) {
        m_sent = std::make_unique<PostgresPipeline>(m_connection.get());
    }
    for (const std::string& sql : std::exchange(m_deferred, {})) {
        m_sent->SendOnce(sql);
    }
    return *m_sent;
}

std::vector<PostgresResult> PostgresHandle::FinishSent() {
    const std::unique_ptr<PostgresPipeline> sent = std::move(m_sent);
    return sent->Finish();
}

std::string_view PostgresHandle::LastDeferred() const {
    return m_deferred.empty() ? std::string_view() : m_deferred.back();
}

void PostgresHandle::Settle() {
    if (m_sent != nullptr || !m_deferred.empty()) {
        Sending();
        FinishSent();
    }
}

void PostgresHandle::GiveUpLeft() noexcept {
    m_deferred.clear();
    m_sent.reset();
}

void PostgresHandle::Close() noexcept {
    GiveUpLeft();
    m_connection.reset();
}

void PostgresHandle::TakeOver(PostgresHandle fresh) {
    GiveUpLeft();
    m_connection = std::move(fresh.m_connection);
    ++m_generation;
}

void PostgresHandle::Forget(const std::string& name) noexcept {
    const State state = GetState();
    // Answers that are awaited belong to callers who can handle their errors, so nothing is run
    // now.
    if (AwaitsAnswers() || (state != State::Idle && state != State::InTransaction)) {
        return;
    }
    try {
        Run("DEALLOCATE " + name);
    } catch (...) {
        // It stays until the connection ends, which does no harm.
    }
}

PostgresHandle::State PostgresHandle::GetState() const {
    switch (PQtransactionStatus(m_connection.get())) {
        case PQTRANS_IDLE:
            return State::Idle;
        case PQTRANS_ACTIVE:
        case PQTRANS_INTRANS:
            return State::InTransaction;
        case PQTRANS_INERROR:
            return State::InFailedTransaction;
        default:
            return State::Lost;
    }
}

std::string_view PostgresHandle::Setting(const char* name) const {
    const char* const value = PQparameterStatus(m_connection.get(), name);
    return value == nullptr ? std::string_view() : value;
}

int PostgresHandle::ServerVersion() const {
    return PQserverVersion(m_connection.get());
}

}  // namespace recorddb::sql
