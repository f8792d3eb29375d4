#include <utility>

#include "recorddb/session.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/sql.h"
#include "recorddb/store/look_ahead.h"

namespace recorddb {

// What a session has in memory and must go back to when work is undone.
struct SessionState {
    Statistics statistics;
    std::size_t pendingHistory = 0;
};

namespace {

SessionState StateOf(const SessionParts& parts) {
    return {.statistics = parts.statistics, .pendingHistory = parts.history.PendingCount()};
}

void GoBackTo(const SessionState& state, SessionParts& parts) noexcept {
    parts.statistics = state.statistics;
    parts.history.DropPending(state.pendingHistory);
}

}  // namespace

struct SessionSavepoint::State {
    explicit State(std::shared_ptr<SessionParts> session)
        : parts(std::move(session)), before(StateOf(*parts)), layer(parts->batch.BeginLayer()) {}

    std::shared_ptr<SessionParts> parts;
    SessionState before;
    std::size_t layer;
    bool isOpen = true;
};

SessionSavepoint::SessionSavepoint(std::shared_ptr<SessionParts> parts)
    : m_state(std::make_unique<State>(std::move(parts))) {}

SessionSavepoint::~SessionSavepoint() {
    Rollback();
}

void SessionSavepoint::Release() {
    m_state->parts->failures.Watch([this] { m_state->parts->batch.ReleaseLayer(m_state->layer); });
    m_state->isOpen = false;
}

void SessionSavepoint::Rollback() noexcept {
    if (!m_state->isOpen) {
        return;
    }
    m_state->isOpen = false;
    m_state->parts->batch.DropLayer(m_state->layer);
    GoBackTo(m_state->before, *m_state->parts);
}

struct SessionTransaction::State {
    State(std::shared_ptr<SessionParts> session, Writing writing)
        : parts(std::move(session)),
          before(StateOf(*parts)),
          transaction(
              parts->failures.Watch([this] { return sql::Transaction(parts->connection); })) {
        if (writing == Writing::Gathered) {
            parts->batch.Begin();
        }
    }

    std::shared_ptr<SessionParts> parts;
    SessionState before;
    sql::Transaction transaction;
};

SessionTransaction::SessionTransaction(std::shared_ptr<SessionParts> parts, Writing writing)
    : m_state(std::make_unique<State>(std::move(parts), writing)) {}

SessionTransaction::~SessionTransaction() {
    Rollback();
}

void SessionTransaction::LookAhead(std::span<const ExpectedSearch> searches) {
    WriteBatch& batch = m_state->parts->batch;
    if (!batch.IsGathering()) {
        return;
    }
    m_state->parts->failures.Watch([&] {
        recorddb::LookAhead(batch.GetConnection(), batch.GetSchema(), batch.Answers())
            .Read(searches);
    });
}

void SessionTransaction::Apply() {
    m_state->parts->failures.Watch(
        [this] { m_state->parts->batch.Apply(WriteBatch::For::Reading); });
}

void SessionTransaction::Commit() {
    try {
        Apply();
        m_state->parts->failures.Watch([this] { m_state->transaction.Commit(); });
        m_state->parts->batch.End();
    } catch (const sql::Error&) {
        Rollback();
        throw;
    }
}

void SessionTransaction::Rollback() noexcept {
    if (!m_state->transaction.IsOpen()) {
        return;
    }
    m_state->parts->batch.End();
    m_state->transaction.Rollback();
    GoBackTo(m_state->before, *m_state->parts);
}

std::unique_ptr<SessionSavepoint> SessionTransaction::Savepoint() {
    return m_state->parts->failures.Watch(
        [this] { return std::make_unique<SessionSavepoint>(m_state->parts); });
}

}  // namespace recorddb
