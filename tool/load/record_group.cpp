#include "tool/load/record_group.h"

namespace tool {

recorddb::SessionTransaction& RecordGroup::Open() {
    if (!m_transaction) {
        m_transaction = m_session->BeginTransaction();
        m_count = 0;
    }
    return *m_transaction;
}

void RecordGroup::Commit() {
    m_count = 0;
    if (m_transaction && !m_rehearse) {
        m_transaction->Commit();
        m_transaction.reset();
    }
}

}  // namespace tool
