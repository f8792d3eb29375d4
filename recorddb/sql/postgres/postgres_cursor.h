#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_CURSOR_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_CURSOR_H

#include <cstdint>
#include <string_view>

#include "recorddb/sql/postgres/postgres_rows.h"

namespace recorddb::sql {

// A query whose rows are fetched in portions of about a mebibyte, however many there are. Others
// may run in between.
class PostgresCursor final : public PostgresRows {
  public:
    // Prepares `sql`, one query, on the handle of a connection; both outlive it. Throws Error.
    PostgresCursor(const Connection& connection, PostgresHandle& handle, std::string_view sql)
        : PostgresRows(handle, sql), m_connection(connection) {}
    ~PostgresCursor() override { Close(); }

    bool Step() override;
    std::int64_t Execute() override;
    void Reset() noexcept override;

  private:
    void Open();
    void Fetch();
    void Close() noexcept;
    bool StandsInTransactionUnderWay() const;

    const Connection& m_connection;
    bool m_isOpen = false;
    bool m_outlivesTransaction = false;
    int m_generationOfOpen = 0;            // of the handle, when it was opened
    std::uint64_t m_transactionCount = 0;  // of the connection, when it was opened
    std::uint64_t m_rollbackCount = 0;
    int m_portion = 0;  // rows asked for at a time
};

}  // namespace recorddb::sql

#endif
