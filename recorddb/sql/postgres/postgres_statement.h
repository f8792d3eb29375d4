#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_STATEMENT_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_STATEMENT_H

#include <string_view>

#include "recorddb/sql/postgres/postgres_rows.h"

namespace recorddb::sql {

// A statement whose rows are fetched all at once: one question to the server, one answer.
class PostgresStatement final : public PostgresRows {
  public:
    // Prepares `sql`, one statement, on a handle that outlives it. Throws Error.
    PostgresStatement(PostgresHandle& handle, std::string_view sql) : PostgresRows(handle, sql) {}

    bool Step() override;
    std::int64_t Execute() override;
    void ExecuteLater() override;
    void Reset() noexcept override { Clear(); }

  private:
    void Run();
};

}  // namespace recorddb::sql

#endif
