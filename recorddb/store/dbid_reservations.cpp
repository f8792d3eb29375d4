#include "recorddb/store/dbid_reservations.h"

#include <algorithm>
#include <optional>

#include "recorddb/sql.h"

namespace recorddb {

std::int64_t DbIdReservations::Reserve(const schema::RecordType& type) {
    std::optional<sql::Transaction> transaction;
    if (!m_connection.InTransaction()) {
        transaction.emplace(m_connection);
    }
    std::int64_t dbid = m_ids.Next(type);
    while (std::find(m_open.begin(), m_open.end(), Reservation{type.id, dbid}) != m_open.end()) {
        dbid = m_ids.Next(type);
    }
    m_open.push_back({type.id, dbid});
    if (transaction) {
        transaction->Commit();
    }
    return dbid;
}

void DbIdReservations::Release(const schema::RecordType& type, std::int64_t dbid) noexcept {
    std::erase(m_open, Reservation{type.id, dbid});
}

}  // namespace recorddb
