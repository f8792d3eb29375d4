#include "tool/load/records/record_group.h"

#include <utility>

namespace tool {

RecordGroup::RecordGroup(AdPtr<recorddb::Session> session, const LoadPolicy& policy,
                         recorddb::Writing writing, std::size_t records)
    : m_session(std::move(session)), m_writing(writing), m_records(records) {
    if (writing != recorddb::Writing::Ahead) {
        m_whole = policy.Begin(*m_session.GetPtr());
    }
}

recorddb::SessionTransaction& RecordGroup::Open() {
    if (!m_transaction) {
        m_transaction =
            m_whole ? m_whole->BeginPart(m_writing) : m_session->BeginTransaction(m_writing);
        m_count = 0;
        m_bytes = 0;
    }
    return *m_transaction;
}

std::unique_ptr<recorddb::GatheredWork> RecordGroup::Take() {
    auto work = Open().Take();
    m_transaction.reset();
    return work;
}

void RecordGroup::Commit() {
    m_count = 0;
    m_bytes = 0;
    if (m_transaction) {
        m_transaction->Commit();
        m_transaction.reset();
    }
}

void RecordGroup::Undo() {
    m_transaction.reset();
    m_session->ForgetFailure();
}

}  // namespace tool
