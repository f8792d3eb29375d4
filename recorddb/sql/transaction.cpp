#include <stdexcept>
#include <utility>

#include "recorddb/errors.h"
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

std::string Connection::ShareMoment() {
    throw Error(ErrorKind::Unsupported, "the engine lets connections share no moment", "");
}

bool Connection::JoinMoment(const std::string& /*moment*/) {
    throw Error(ErrorKind::Unsupported, "the engine lets connections share no moment", "");
}

std::vector<Transaction> BeginTogether(std::span<Connection* const> connections) {
    // Only where somebody writes without a pause does this take more than one or two.
    constexpr int most = 1000;
    for (int tries = 0; tries < most; ++tries) {
        for (Connection* const connection : connections) {
            connection->WatchOthers();
        }
        std::vector<Transaction> transactions;
        std::string moment;
        bool areTogether = true;
        for (std::size_t i = 0; areTogether && i < connections.size(); ++i) {
            transactions.emplace_back(*connections[i]);
            if (i == 0) {
                moment = connections[i]->ShareMoment();
            } else {
                areTogether = connections[i]->JoinMoment(moment);
            }
        }
        if (areTogether) {
            return transactions;
        }
    }
    throw Error(ErrorKind::Busy, "others write to the database without a pause", "");
}

}  // namespace recorddb::sql
