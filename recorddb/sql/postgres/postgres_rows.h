#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_ROWS_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_ROWS_H

#include <string>
#include <string_view>
#include <vector>

#include "recorddb/sql.h"
#include "recorddb/sql/postgres/postgres_handle.h"
#include "recorddb/sql/postgres/postgres_parameters.h"
#include "recorddb/sql/postgres/postgres_result.h"
#include "recorddb/sql/storage.h"

namespace recorddb::sql {

// What all statements on a server have in common: parameters, and a current row of those that have
// been fetched.
class PostgresRows : public Statement, public StorageTeller {
  public:
    ~PostgresRows() override;

    void BindInt(int parameter, std::int64_t value) override;
    void BindText(int parameter, std::string_view text) override;
    void BindBlob(int parameter, std::span<const std::byte> data) override;
    void BindNull(int parameter) override;
    bool IsNull(int column) const override;
    std::int64_t Int(int column) const override;
    std::string_view Text(int column) const override;
    std::span<const std::byte> Blob(int column) const override;
    int ColumnCount() const override { return m_columnCount; }
    Storage StorageOf(int column) const override;

  protected:
    // Prepares `sql`, one statement, on a handle that outlives it. Throws Error.
    PostgresRows(PostgresHandle& handle, std::string_view sql);

    PostgresHandle& Handle() { return m_handle; }

    // Prepares the statement again when the connection is not the one that it was prepared on.
    void EnsurePrepared();
    const std::string& Name() const { return m_name; }
    const std::string& Sql() const { return m_sql; }
    const PostgresParameters& Parameters() const { return m_parameters; }
    const PostgresResult& Fetched() const { return m_fetched; }

    bool IsUnderWay() const { return m_underWay; }

    // Takes rows that were fetched; the current row stands before the first of them.
    void Take(PostgresResult rows);

    // Advances within the rows that were taken; false after the last one.
    bool NextFetched();

    // Ends the execution.
    void Clear() noexcept;

  private:
    // Throws Error while an execution is under way.
    PostgresParameters& Idle();

    PostgresHandle& m_handle;
    int m_generation;  // of the handle, when the statement was prepared
    std::string m_name;
    std::string m_sql;
    PostgresParameters m_parameters;
    int m_columnCount;
    PostgresResult m_fetched;
    int m_row = -1;
    bool m_underWay = false;
    mutable std::vector<std::vector<std::byte>> m_blobs;  // of the current row, by column
};

}  // namespace recorddb::sql

#endif
