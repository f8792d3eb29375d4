#ifndef RECORDDB_SQL_POSTGRES_ARRAY_STATEMENTS_H
#define RECORDDB_SQL_POSTGRES_ARRAY_STATEMENTS_H

#include <cstddef>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "recorddb/sql/postgres/postgres_array.h"
#include "recorddb/sql/postgres/postgres_handle.h"

namespace recorddb::sql {

// Statements about many rows at once, whose parameters are arrays, one for each column.

// Whether the rows have their number, from 1, as the column n.
enum class Numbered { No, Yes };

// The rows that the parameters hold as a table zt_new, whose columns are v1, v2 ...
std::string UnnestedSql(std::span<const RowColumn> columns, Numbered numbered);

// The parameters of such a statement.
class ArrayParameters {
  public:
    explicit ArrayParameters(std::span<const RowColumn> columns);

    // Adds the cells of one row, or of several, row by row; returns the bytes that they take.
    // Throws Error for a text that the server cannot store.
    std::size_t AddRows(std::span<const Cell> cells);

    // They are good until the next row is added.
    const PostgresParameters& Values();

    void Clear();

  private:
    std::vector<PostgresArray> m_arrays;
    PostgresParameters m_values;
};

// Such statements as they are prepared on a connection.
class ArrayStatements {
  public:
    // The handle outlives it.
    explicit ArrayStatements(PostgresHandle& handle)
        : m_handle(handle), m_generation(handle.Generation()) {}

    bool Has(const std::string& sql) const {
        return m_generation == m_handle.Generation() && m_names.contains(sql);
    }

    // The name of the statement with this text, which is prepared first if need be.
    const std::string& NameOf(const std::string& sql);

  private:
    PostgresHandle& m_handle;
    int m_generation;  // of the handle, when they were prepared
    std::unordered_map<std::string, std::string> m_names;
};

}  // namespace recorddb::sql

#endif
