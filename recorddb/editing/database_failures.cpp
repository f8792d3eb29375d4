#include "recorddb/editing/database_failures.h"

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"

namespace recorddb {

void DatabaseFailures::Remember(const sql::Error& error) {
    m_last = error;
    m_failedTransaction = m_connection.InTransaction() ? m_connection.TransactionCount() : 0;
}

void DatabaseFailures::Throw() const {
    ThrowMessage(ErrorMessage(
        message_id::kDatabaseFailed,
        {{u"_coreinfo_", sql::KindName(m_last->Kind())}, {u"_text_", m_last->DriverText()}}));
}

}  // namespace recorddb
