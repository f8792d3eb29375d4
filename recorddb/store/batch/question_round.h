#ifndef RECORDDB_STORE_BATCH_QUESTION_ROUND_H
#define RECORDDB_STORE_BATCH_QUESTION_ROUND_H

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "recorddb/sql.h"
#include "recorddb/sql/row_reader.h"
#include "recorddb/store/batch/key_row.h"

namespace recorddb {

// Questions for rows that are asked together, each of one table by many keys. Operations throw
// sql::Error.
class QuestionRound {
  public:
    // The connection outlives the object.
    explicit QuestionRound(sql::Connection& connection) : m_reader(connection.MakeRowReader()) {}

    // As sql::RowQuestion, but that it holds what it asks with.
    struct Question {
        std::string table;
        std::vector<sql::RowColumn> columns;
        std::vector<sql::RowColumn> keys;
        std::string_view order;
        std::size_t most = 0;
        std::vector<sql::Cell> cells;
        std::deque<KeyRow> keyRows{};  // of which the cells borrow
    };

    // Asks, unless there are no keys. See sql::RowReader::Ask for `take`.
    void Ask(Question question, sql::RowReader::Take take);

    // Returns once all questions have been answered.
    void Finish() { m_reader->Finish(); }

  private:
    std::deque<Question> m_questions;  // of which the reader borrows
    std::unique_ptr<sql::RowReader> m_reader;
};

// The number in a cell; 0 when it holds none.
inline std::int64_t IntIn(const sql::Cell& cell) {
    const auto* const number = std::get_if<std::int64_t>(&cell);
    return number != nullptr ? *number : 0;
}

}  // namespace recorddb

#endif
