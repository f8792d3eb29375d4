#include "tool/load/record_group.h"

#include <utility>

namespace tool {

RecordGroup::RecordGroup(AdPtr<recorddb::Session> session, const LoadPolicy& policy)
    : m_session(std::move(session)), m_policy(policy) {
    m_policy.Begin(*m_session.GetPtr(), m_transaction);
}

recorddb::SessionTransaction& RecordGroup::Open() {
    if (!m_transaction) {
        m_transaction = m_session->BeginTransaction();
        m_count = 0;
    }
    return *m_transaction;
}

void RecordGroup::Commit() {
    m_count = 0;
    if (m_transaction) {
        m_policy.EndGroup(m_transaction);
    }
}

}  // namespace tool
