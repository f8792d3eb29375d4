#ifndef RECORDDB_SQL_POSTGRES_POSTGRES_ARRAY_H
#define RECORDDB_SQL_POSTGRES_POSTGRES_ARRAY_H

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "recorddb/sql/row_writer.h"

namespace recorddb::sql {

// Values of one type as one parameter of a statement: an array in the server's binary form.
class PostgresArray {
  public:
    explicit PostgresArray(CellType type);

    // Adds a value of the array's type, or NULL; returns the bytes that it takes. Throws Error for
    // a text that the server cannot store.
    std::size_t Add(const Cell& value);

    // The array of all values that were added, for the parameter's value. It is good until the next
    // one is added.
    std::span<const std::byte> Bytes();

    void Clear();

  private:
    void AddInt32(std::int32_t number);
    void PutInt32(std::size_t position, std::int32_t number);

    CellType m_type;
    std::int32_t m_count = 0;
    bool m_hasNull = false;
    std::vector<std::byte> m_bytes;
};

}  // namespace recorddb::sql

#endif
