#include <stdexcept>
#include <utility>

#include "recorddb/sql.h"

namespace recorddb::sql {

Transaction::Transaction(Connection& connection, Access access) : m_connection(&connection) {
    connection.BeginTransaction(access);
}

Transaction::Transaction(Transaction&& other) noexcept
    : m_connection(std::exchange(other.m_connection, nullptr)) {}

Transaction::~Transaction() {
    Rollback();
}

void Transaction::Commit() {
    if (m_connection == nullptr) {
        throw std::logic_error("commit of a transaction that has ended");
    }
    m_connection->CommitTransaction();
    m_connection = nullptr;
}

void Transaction::Rollback() noexcept {
    if (Connection* connection = std::exchange(m_connection, nullptr)) {
        connection->RollbackTransaction();
    }
}

}  // namespace recorddb::sql
