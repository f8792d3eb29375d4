#include "recorddb/sql/row_reader.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

#include "sql_test.h"

namespace recorddb::sql {

namespace {

std::string TextOf(const Cell& cell) {
    if (const auto* const text = std::get_if<std::string_view>(&cell)) {
        return std::string(*text);
    }
    const auto* const number = std::get_if<std::int64_t>(&cell);
    return number != nullptr ? std::to_string(*number) : "NULL";
}

class RowReaderTest : public OnEachEngine<SqlTest> {
  protected:
    RowReaderTest() : m_reader(m_connection->MakeRowReader()), m_transaction(*m_connection) {
        for (const auto& [name, size] :
             {std::pair{"a", "2"}, {"b", "1"}, {"c", "2"}, {"d", "2"}, {"e", "NULL"}}) {
            m_connection->ExecuteScript(
                fmt::format("INSERT INTO thing (name, size) VALUES ('{}', {})", name, size));
        }
    }

    // "KEY:NAME/SIZE ..." of the rows of the table `thing` with these keys.
    std::string Read(const std::vector<RowColumn>& keys, const std::vector<Cell>& cells,
                     std::size_t most = 0) {
        std::string rows;
        m_reader->Ask({"thing", m_columns, keys, cells, "name", most},
                      [&rows](std::size_t key, std::span<const Cell> row) {
                          rows += fmt::format("{}:{}/{} ", key, TextOf(row[0]), TextOf(row[1]));
                      });
        m_reader->Finish();
        return rows;
    }

    const std::array<RowColumn, 2> m_columns = {
        {{"name", CellType::Text}, {"size", CellType::Integer}}};
    const RowColumn m_name = {"name", CellType::Text};
    const RowColumn m_size = {"size", CellType::Integer};
    std::unique_ptr<RowReader> m_reader;
    Transaction m_transaction;
};

TEST_P(RowReaderTest, RowsComeKeyByKey) {
    EXPECT_EQ(Read({m_name}, {"c", "a", "b"}), "0:c/2 1:a/2 2:b/1 ");
}

TEST_P(RowReaderTest, KeysWithoutRowsBringNone) {
    EXPECT_EQ(Read({m_name}, {"x", "a", "y"}), "1:a/2 ");
}

TEST_P(RowReaderTest, KeyThatIsAskedForTwiceIsAnsweredTwice) {
    EXPECT_EQ(Read({m_name}, {"a", "a"}), "0:a/2 1:a/2 ");
}

TEST_P(RowReaderTest, RowsOfOneKeyAreInOrderAndAsManyAsAreWanted) {
    EXPECT_EQ(Read({m_size}, {2, 1}), "0:a/2 0:c/2 0:d/2 1:b/1 ");
    EXPECT_EQ(Read({m_size}, {2, 1}, 2), "0:a/2 0:c/2 1:b/1 ");
}

TEST_P(RowReaderTest, KeysMayHaveSeveralColumns) {
    EXPECT_EQ(Read({m_name, m_size}, {"a", 2, "b", 2, "c", 2}), "0:a/2 2:c/2 ");
}

TEST_P(RowReaderTest, ColumnWithoutValueIsNone) {
    EXPECT_EQ(Read({m_name}, {"e"}), "0:e/NULL ");
}

TEST_P(RowReaderTest, WhatWasWrittenInTheTransactionIsRead) {
    Insert("new");
    EXPECT_EQ(Read({m_name}, {"new"}), "0:new/NULL ");
}

TEST_P(RowReaderTest, ManyKeysAreAnswered) {
    std::vector<Cell> cells(1000, Cell("x"));
    cells.back() = "b";
    EXPECT_EQ(Read({m_name}, cells), "999:b/1 ");
}

ON_EACH_LAYOUT(RowReaderTest);

}  // namespace

}  // namespace recorddb::sql
