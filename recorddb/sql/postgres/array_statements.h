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

// How the tables stand that statements are about.
enum class Standing { OnOneServer, SpreadOverMachines };

// What joins rows of the table zt_row with those of zt_new by its first columns, as a condition.
// Where tables are spread, the parameters stand in it as well, since machines without a row that is
// meant are found by values, and not by what a row is joined with.
std::string JoinedBy(std::span<const RowColumn> keys, Standing standing);

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

    void SetStanding(Standing standing) { m_standing = standing; }
    Standing GetStanding() const { return m_standing; }

    bool Has(const std::string& sql) const {
        return m_generation == m_handle.Generation() && m_names.contains(sql);
    }

    // The name of the statement with this text, which is prepared first if need be.
    const std::string& NameOf(const std::string& sql);

  private:
    PostgresHandle& m_handle;
    Standing m_standing = Standing::OnOneServer;
    int m_generation;  // of the handle, when they were prepared
    std::unordered_map<std::string, std::string> m_names;
};

}  // namespace recorddb::sql

#endif
