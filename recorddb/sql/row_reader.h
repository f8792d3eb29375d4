#ifndef RECORDDB_SQL_ROW_READER_H
#define RECORDDB_SQL_ROW_READER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

#include "recorddb/sql.h"
#include "recorddb/sql/row_writer.h"

namespace recorddb::sql {

// Asks for rows of one table by many keys.
struct RowQuestion {
    std::string_view table;              // as it is called, without quotes
    std::span<const RowColumn> columns;  // to be read of the rows
    std::span<const RowColumn> keys;     // that find the rows, by equality
    std::span<const Cell> cells;         // of the keys, key by key, none of them NULL; not empty
    std::string_view order;              // the column in whose order the rows of one key come
    // Of the rows of one key, the first ones; 0: all. Not to be asked of a table that is spread
    // over machines.
    std::size_t most = 0;
};

// Reads many rows in the transaction under way, in as few round trips as the engine can.
class RowReader {
  public:
    // Takes a row: the number of its key, from 0, and its cells, which live during the call.
    using Take = std::function<void(std::size_t key, std::span<const Cell> row)>;

    RowReader() = default;
    RowReader(const RowReader&) = delete;
    RowReader& operator=(const RowReader&) = delete;
    virtual ~RowReader() = default;

    // Asks, and hands the answers to `take`, now or by Finish, key by key in their order. All that
    // the question refers to stays alive and as it is until Finish has returned or the reader is
    // gone. `take` must not ask for anything itself. Throws Error, also for an earlier question,
    // and what `take` throws.
    virtual void Ask(const RowQuestion& question, Take take) = 0;

    // Returns once all questions have been answered. The reader may be used again.
    virtual void Finish() = 0;
};

// Reads key by key with prepared statements, on any engine. The connection outlives it.
std::unique_ptr<RowReader> MakeStatementRowReader(Connection& connection);

}  // namespace recorddb::sql

#endif
