#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "recorddb/session.h"
#include "recorddb/session/session_parts.h"
#include "recorddb/sql.h"
#include "recorddb/sql/savepoint.h"
#include "recorddb/store/batch/look_ahead.h"
#include "recorddb/store/batch/pending_changes.h"
#include "recorddb/store/batch/provisional_ids.h"
#include "recorddb/store/batch/touched.h"

namespace recorddb {

// What a session has in memory and must go back to when work is undone.
struct SessionState {
    Statistics statistics;
    std::size_t pendingHistory = 0;
};

struct GatheredWork::State {
    PendingChanges changes;
    ReadNotes reads;
    Statistics done;
};

GatheredWork::GatheredWork(std::unique_ptr<State> state) : m_state(std::move(state)) {}

GatheredWork::~GatheredWork() = default;

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
    State(std::shared_ptr<SessionParts> session, Writing writing, Extent extent)
        : parts(std::move(session)), before(StateOf(*parts)) {
        parts->failures.Watch([&] { Begin(writing, extent); });
        if (writing == Writing::Ahead) {
            parts->batch.BeginAhead();
        } else if (writing == Writing::Gathered) {
            parts->batch.Begin();
            if (extent == Extent::Whole) {
                KeepTurn();
            }
        } else {
            parts->batch.Writes().NoteAll();
        }
    }

    void Begin(Writing writing, Extent extent) {
        if (extent == Extent::Part) {
            savepoint.emplace(parts->connection);
        } else {
            transaction.emplace(parts->connection, writing == Writing::Ahead
                                                       ? sql::Access::Reading
                                                       : sql::Access::Writing);
        }
    }

    bool IsOpen() const { return savepoint || transaction; }

    void Commit() {
        if (savepoint) {
            savepoint->Release();
        } else if (transaction) {
            transaction->Commit();
        } else {
            throw std::logic_error("commit of a transaction that has ended");
        }
        savepoint.reset();
        transaction.reset();
    }

    void Rollback() noexcept {
        savepoint.reset();
        transaction.reset();
    }

    // The writes of this session are remembered one by one. Whether others may have written in
    // between, only the connection can tell.
    void KeepTurn() {
        if (parts->batch.Writes().IsOn() &&
            !parts->failures.Watch([this] { return parts->connection.KeepTurn(); })) {
            parts->batch.Writes().NoteOthers();
        }
    }

    std::shared_ptr<SessionParts> parts;
    SessionState before;
    // The one or the other.
    std::optional<sql::Transaction> transaction;
    std::optional<sql::Savepoint> savepoint;
};

SessionTransaction::SessionTransaction(std::shared_ptr<SessionParts> parts, Writing writing,
                                       Extent extent)
    : m_state(std::make_unique<State>(std::move(parts), writing, extent)) {}

SessionTransaction::~SessionTransaction() {
    Rollback();
}

void SessionTransaction::LookAhead(std::span<const ExpectedSearch> searches) {
    WriteBatch& batch = m_state->parts->batch;
    if (!batch.IsGathering()) {
        return;
    }
    m_state->parts->failures.Watch([&] {
        recorddb::LookAhead(batch.GetConnection(), batch.GetSchema(), batch.GetLayout(),
                            batch.Answers())
            .Read(searches);
    });
}

std::unique_ptr<GatheredWork> SessionTransaction::Take() {
    auto [changes, reads] = m_state->parts->batch.Take();
    auto work = std::make_unique<GatheredWork>(std::make_unique<GatheredWork::State>(
        GatheredWork::State{std::move(changes), std::move(reads),
                            m_state->parts->statistics - m_state->before.statistics}));
    Rollback();
    return work;
}

bool SessionTransaction::Adopt(GatheredWork& work, std::uint64_t moment) {
    SessionParts& parts = *m_state->parts;
    GatheredWork::State& state = *work.m_state;
    Apply();
    if (parts.batch.Writes().HaveTouched(state.reads, moment)) {
        return false;
    }
    std::vector<std::optional<std::int64_t>> highest;
    for (const schema::RecordType& type : parts.batch.GetSchema().Types()) {
        highest.emplace_back();
        if (state.changes.Of(type.id).HasNew()) {
            highest.back() = parts.failures.Watch([&] { return parts.ids.Last(type); });
        }
    }
    if (!GiveDbIds(state.changes, parts.batch.GetSchema(), highest)) {
        return false;
    }
    for (const schema::RecordType& type : parts.batch.GetSchema().Types()) {
        if (state.changes.Of(type.id).HasNew()) {
            parts.ids.SetLast(type, state.changes.Of(type.id).HighestNew());
        }
    }
    parts.batch.Adopt(std::move(state.changes));
    parts.statistics = parts.statistics + state.done;
    return true;
}

void SessionTransaction::Apply() {
    m_state->parts->failures.Watch(
        [this] { m_state->parts->batch.Apply(WriteBatch::For::Reading); });
}

void SessionTransaction::Commit() {
    try {
        Apply();
        m_state->parts->failures.Watch([this] { m_state->Commit(); });
        m_state->parts->batch.End();
        m_state->parts->batch.Writes().Keep();
    } catch (const sql::Error& error) {
        const bool isUncertain = error.Kind() == sql::ErrorKind::ConnectionLost;
        Rollback();
        if (isUncertain) {
            // Perhaps it has been committed, with whatever it had written.
            m_state->parts->batch.Writes().NoteAll();
            m_state->parts->batch.Writes().Keep();
        }
        throw;
    }
}

void SessionTransaction::Rollback() noexcept {
    if (!m_state->IsOpen()) {
        return;
    }
    m_state->parts->batch.End();
    m_state->parts->batch.Writes().Drop();
    m_state->Rollback();
    GoBackTo(m_state->before, *m_state->parts);
}

std::unique_ptr<SessionSavepoint> SessionTransaction::Savepoint() {
    return m_state->parts->failures.Watch(
        [this] { return std::make_unique<SessionSavepoint>(m_state->parts); });
}

std::unique_ptr<SessionTransaction> SessionTransaction::BeginPart(Writing writing) {
    return std::make_unique<SessionTransaction>(m_state->parts, writing, Extent::Part);
}

}  // namespace recorddb
