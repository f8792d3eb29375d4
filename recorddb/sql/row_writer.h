#ifndef RECORDDB_SQL_ROW_WRITER_H
#define RECORDDB_SQL_ROW_WRITER_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string_view>
#include <variant>

#include "recorddb/sql.h"

namespace recorddb::sql {

// What a column holds: BIGINT or TEXT.
enum class CellType { Integer, Text };

struct RowColumn {
    std::string_view name;  // as it is called, without quotes
    CellType type;
};

// The value of one column in one row: NULL, an integer or a text in UTF-8 without NUL, whichever
// the column's type allows. Texts are borrowed.
using Cell = std::variant<std::monostate, std::int64_t, std::string_view>;

// Binds a cell to a parameter that has not been bound yet.
void BindCell(Statement& statement, int parameter, const Cell& cell);

// One kind of change of many rows of one table.
struct RowChange {
    enum class Kind {
        Insert,          // rows that are not there yet
        InsertOrUpdate,  // rows that may be there with these keys; then they get the other values
        Update,          // rows that are there with these keys get the other values
        Raise,           // the same, but integers only, and those that are greater than before
        Delete           // rows that are there with these keys; there are no other columns
    };

    Kind kind;
    std::string_view table;  // as it is called, without quotes
    // The first `keys` of the columns say which row is meant, by equality; none of them is NULL in
    // any row, and no two rows have the same. For InsertOrUpdate they are a unique key of the
    // table. Insert does not use them. A column may stand among the keys of an Update and after
    // them as well: it is compared with the one value and gets the other.
    std::span<const RowColumn> columns;
    std::size_t keys = 0;
    std::span<const Cell> cells;  // row by row, columns.size() each; not empty
};

// Writes many rows in the transaction under way. Changes are made in the order in which they are
// given; the rows of one change as if at once, or one by one in their order, as the engine likes.
//
// Every change checks itself: each of its rows must be inserted, changed or deleted exactly once.
// If not, the writer throws Error (Conflict), as it throws Error for what the engine refuses; then
// any part of the changes may have been made, and the transaction is good for a roll-back only.
class RowWriter {
  public:
    RowWriter() = default;
    RowWriter(const RowWriter&) = delete;
    RowWriter& operator=(const RowWriter&) = delete;
    virtual ~RowWriter() = default;

    // Makes a change, now or by Finish. All that it refers to stays alive and as it is until Finish
    // has returned or the writer is gone. May throw Error for an earlier change.
    virtual void Write(const RowChange& change) = 0;

    // Returns once all changes have been made and checked. The writer may be used again.
    virtual void Finish() = 0;
};

// Writes with prepared statements of one row or a few, on any engine. The connection outlives it.
std::unique_ptr<RowWriter> MakeStatementRowWriter(Connection& connection);

}  // namespace recorddb::sql

#endif
