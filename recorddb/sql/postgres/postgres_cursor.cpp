#include "recorddb/sql/postgres/postgres_cursor.h"

#include <fmt/format.h>

#include <algorithm>

namespace recorddb::sql {

namespace {

// Rows may be of any size: a few first, then as many as come to the size of a portion.
constexpr int kFirstPortion = 16;
constexpr int kLargestPortion = 1000;
constexpr std::size_t kPortionSize = std::size_t{1} << 20U;

}  // namespace

bool PostgresCursor::Step() {
    try {
        if (!IsUnderWay()) {
            Open();
            Fetch();
        }
        if (NextFetched()) {
            return true;
        }
        const bool more = Fetched().RowCount() == m_portion;
        if (more) {
            Fetch();
        }
        if (more && NextFetched()) {
            return true;
        }
    } catch (...) {
        Reset();
        throw;
    }
    Reset();
    return false;
}

std::int64_t PostgresCursor::Execute() {
    while (Step()) {
    }
    return 0;
}

void PostgresCursor::Reset() noexcept {
    Close();
    Clear();
}

void PostgresCursor::Open() {
    m_outlivesTransaction = !m_connection.InTransaction();
    m_transactionCount = m_connection.TransactionCount();
    m_rollbackCount = m_connection.RollbackCount();
    m_generationOfOpen = Handle().Generation();
    m_portion = kFirstPortion;
    Handle().RunOnce(fmt::format("DECLARE {} NO SCROLL CURSOR {} FOR {}", Name(),
                                 m_outlivesTransaction ? "WITH HOLD" : "WITHOUT HOLD", Sql()),
                     Parameters());
    m_isOpen = true;
}

void PostgresCursor::Fetch() {
    if (Fetched().RowCount() > 0) {
        const std::size_t rowSize =
            Fetched().Size() / static_cast<std::size_t>(Fetched().RowCount()) + 1;
        m_portion =
            static_cast<int>(std::clamp<std::size_t>(kPortionSize / rowSize, 1, kLargestPortion));
    }
    Take(Handle().Run(fmt::format("FETCH FORWARD {} FROM {}", m_portion, Name())));
}

// After a roll-back, of a savepoint too, it may be gone, and closing a cursor that is not there
// would make the transaction fail. So it is left to the end of the transaction.
bool PostgresCursor::StandsInTransactionUnderWay() const {
    return m_connection.InTransaction() && m_connection.TransactionCount() == m_transactionCount &&
           m_connection.RollbackCount() == m_rollbackCount;
}

void PostgresCursor::Close() noexcept {
    if (!m_isOpen) {
        return;
    }
    m_isOpen = false;
    const PostgresHandle::State state = Handle().GetState();
    const bool isThere = m_generationOfOpen == Handle().Generation() &&
                         (m_outlivesTransaction || StandsInTransactionUnderWay());
    // It ends with the transaction at the latest.
    if (!isThere || Handle().AwaitsAnswers() ||
        (state != PostgresHandle::State::Idle && state != PostgresHandle::State::InTransaction)) {
        return;
    }
    try {
        Handle().Run("CLOSE " + Name());
    } catch (...) {
        // It goes with the transaction, or with the connection.
    }
}

}  // namespace recorddb::sql
