#include "recorddb/sql/savepoint.h"

#include <stdexcept>
#include <utility>

namespace recorddb::sql {

Savepoint::Savepoint(Connection& connection)
    : m_connection(&connection), m_depth(connection.BeginSavepoint()) {}

Savepoint::~Savepoint() {
    Rollback();
}

void Savepoint::Release() {
    if (m_connection == nullptr) {
        throw std::logic_error("release of a savepoint that has ended");
    }
    m_connection->ReleaseSavepoint(m_depth);
    m_connection = nullptr;
}

void Savepoint::Rollback() noexcept {
    if (Connection* connection = std::exchange(m_connection, nullptr)) {
        connection->RollbackSavepoint(m_depth);
    }
}

}  // namespace recorddb::sql
