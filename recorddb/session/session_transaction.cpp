#include "recorddb/session/session_transaction.h"

#include <utility>

namespace recorddb {

namespace {

SessionState StateOf(const SessionParts& parts) {
    return {.statistics = parts.statistics, .pendingHistory = parts.history.PendingCount()};
}

void GoBackTo(const SessionState& state, SessionParts& parts) noexcept {
    parts.statistics = state.statistics;
    parts.history.DropPending(state.pendingHistory);
}

}  // namespace

SessionSavepoint::SessionSavepoint(AdPtr<SessionParts> parts)
    : m_parts(std::move(parts)), m_before(StateOf(*m_parts)), m_savepoint(m_parts->connection) {}

SessionSavepoint::~SessionSavepoint() {
    Rollback();
}

void SessionSavepoint::Release() {
    m_parts->failures.Watch([this] { m_savepoint.Release(); });
    m_open = false;
}

void SessionSavepoint::Rollback() noexcept {
    if (!m_open) {
        return;
    }
    m_open = false;
    m_savepoint.Rollback();
    GoBackTo(m_before, *m_parts);
}

SessionTransaction::SessionTransaction(AdPtr<SessionParts> parts)
    : m_parts(std::move(parts)),
      m_before(StateOf(*m_parts)),
      m_transaction(m_parts->failures.Watch([this] { return m_parts->database.Begin(); })) {}

SessionTransaction::~SessionTransaction() {
    Rollback();
}

void SessionTransaction::Commit() {
    try {
        m_parts->failures.Watch([this] { m_transaction.Commit(); });
    } catch (const sql::Error&) {
        Rollback();
        throw;
    }
}

void SessionTransaction::Rollback() noexcept {
    if (!m_transaction.IsOpen()) {
        return;
    }
    m_transaction.Rollback();
    GoBackTo(m_before, *m_parts);
}

std::unique_ptr<SessionSavepoint> SessionTransaction::Savepoint() {
    return m_parts->failures.Watch([this] { return std::make_unique<SessionSavepoint>(m_parts); });
}

}  // namespace recorddb
