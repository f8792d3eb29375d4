#ifndef RECORDDB_STORE_DBID_RESERVATIONS_H
#define RECORDDB_STORE_DBID_RESERVATIONS_H

#include <cstdint>
#include <vector>

#include "recorddb/sql.h"
#include "recorddb/store/record_ids.h"

namespace recorddb {

// Gives dbids to records before they are written, and never the same one to two records of the
// session that are both open.
class DbIdReservations {
  public:
    // Connection and ids outlive the object.
    DbIdReservations(sql::Connection& connection, schema::RecordIds& ids)
        : m_connection(connection), m_ids(ids) {}

    // A dbid for a new record, which its holder releases. Inside a transaction it is safe from
    // other writers until the transaction ends; outside of one another writer can take it before
    // the record is written. Throws sql::Error.
    std::int64_t Reserve(const schema::RecordType& type);

    // Ends a reservation: the record has been written, or never will be.
    void Release(const schema::RecordType& type, std::int64_t dbid) noexcept;

  private:
    struct Reservation {
        std::int64_t type;
        std::int64_t dbid;
        bool operator==(const Reservation&) const = default;
    };

    sql::Connection& m_connection;
    schema::RecordIds& m_ids;
    std::vector<Reservation> m_open;  // of the few records that are open at a time
};

}  // namespace recorddb

#endif
