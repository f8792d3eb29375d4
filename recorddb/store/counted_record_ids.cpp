#include "recorddb/store/counted_record_ids.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <string>

#include "platform/messages/message_ids.h"
#include "recorddb/messages/error_message.h"
#include "recorddb/store/batch/provisional_ids.h"

namespace recorddb::schema {

CountedRecordIds::CountedRecordIds(WriteBatch& batch, const Schema& schema)
    : m_batch(batch), m_connection(batch.GetConnection()), m_counters(schema.Types().size()) {}

CountedRecordIds::Counter& CountedRecordIds::CounterOf(const RecordType& type) {
    if (!m_connection.InTransaction()) {
        throw std::logic_error("a record's dbid is given out in a transaction only");
    }
    Counter& counter = m_counters[static_cast<std::size_t>(type.id - 1)];
    // After a roll-back the numbers given out since are free again, and between transactions
    // another writer may have used some.
    if (counter.transactionCount != m_connection.TransactionCount() ||
        counter.undoCount != m_batch.UndoCount()) {
        Read(type, counter);
    }
    return counter;
}

std::int64_t CountedRecordIds::Last(const RecordType& type) {
    return CounterOf(type).last;
}

std::int64_t CountedRecordIds::Next(const RecordType& type) {
    Counter& counter = CounterOf(type);
    if (counter.last == std::numeric_limits<std::int64_t>::max()) {
        ThrowMessage(
            ErrorMessage(message_id::kDbIdsUsedUp,
                         {{u"_datatype_", type.name}, {u"_value_", std::to_string(counter.last)}}));
    }
    return ++counter.last;
}

// The highest dbid in use.
std::int64_t CountedRecordIds::Highest(const RecordType& type) {
    // Other programs may have stored dbids below 1; here, such a number means that a record has
    // none yet.
    return std::max(
        {m_batch.Numbers().Of(type), m_batch.Pending().HighestNew(type), std::int64_t{0}});
}

void CountedRecordIds::Read(const RecordType& type, Counter& counter) {
    counter.last = m_batch.IsAhead()
                       ? std::max(m_batch.Pending().HighestNew(type), kFirstProvisionalId - 1)
                       : Highest(type);
    counter.transactionCount = m_connection.TransactionCount();
    counter.undoCount = m_batch.UndoCount();
}

}  // namespace recorddb::schema
