#include "recorddb/schema/record_ids.h"

#include <fmt/format.h>

#include <stdexcept>

#include "recorddb/schema/tables.h"

namespace recorddb::schema {

RecordIds::RecordIds(sql::Connection& connection, const Schema& schema)
    : m_connection(connection), m_counters(schema.Types().size()) {}

std::int64_t RecordIds::Next(const RecordType& type) {
    if (!m_connection.InTransaction()) {
        throw std::logic_error("a record's dbid is given out in a transaction only");
    }
    Counter& counter = m_counters[static_cast<std::size_t>(type.id - 1)];
    // After a roll-back the numbers given out since are free again, and between transactions
    // another writer may have used some.
    if (counter.transactionCount != m_connection.TransactionCount() ||
        counter.rollbackCount != m_connection.RollbackCount()) {
        Read(type, counter);
    }
    return ++counter.last;
}

void RecordIds::Read(const RecordType& type, Counter& counter) {
    if (counter.highest == nullptr) {
        counter.highest = &m_connection.Prepare(
            fmt::format("SELECT max({}) FROM {}", dbIdName, Quoted(type.name)));
    }
    counter.last = sql::QueryInt(*counter.highest).value_or(0);
    counter.transactionCount = m_connection.TransactionCount();
    counter.rollbackCount = m_connection.RollbackCount();
}

}  // namespace recorddb::schema
