#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_RESULT_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_RESULT_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "recorddb/sql/storage.h"

struct pg_result;

namespace recorddb::sql {

// What the server answered to a statement: rows, whose values stand in it as text. Rows and columns
// count from 0.
class PostgresResult {
  public:
    // Nothing: no rows and no columns.
    PostgresResult() = default;

    // Takes over a result of libpq.
    explicit PostgresResult(pg_result* result) : m_result(result) {}

    int RowCount() const;
    int ColumnCount() const;

    // Of what PQdescribePrepared returned.
    int ParameterCount() const;

    // The number of rows that were inserted, changed or deleted.
    std::int64_t AffectedRows() const;

    // What the server calls the statement that it ran, such as "COMMIT".
    std::string_view Command() const;

    // The bytes that the values of all rows take.
    std::size_t Size() const;

    bool IsNull(int row, int column) const;
    std::string_view Text(int row, int column) const;

    // A truth value reads as 1 or 0, and what is no whole number as 0.
    std::int64_t Int(int row, int column) const;

    // Bytes of a column of bytes, those of the text of any other.
    std::vector<std::byte> Bytes(int row, int column) const;

    Storage StorageOf(int row, int column) const;

  private:
    struct Clearer {
        void operator()(pg_result* result) const noexcept;
    };

    std::unique_ptr<pg_result, Clearer> m_result;
};

}  // namespace recorddb::sql

#endif
