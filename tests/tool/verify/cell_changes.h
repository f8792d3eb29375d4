#ifndef TESTS_TOOL_CELL_CHANGES_H
#define TESTS_TOOL_CELL_CHANGES_H

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <string>
#include <vector>

namespace tool {

using Row = std::vector<std::string>;  // SQL literals

// A table of an SQLite file with all that is in it.
struct Table {
    std::string name;
    std::vector<std::string> columns;
    std::vector<std::string> key;  // columns that tell a row; all of them where there is no key
    std::vector<Row> rows;

    std::size_t Index(const std::string& column) const {
        return static_cast<std::size_t>(std::find(columns.begin(), columns.end(), column) -
                                        columns.begin());
    }

    // The condition that only this row meets.
    std::string Where(const Row& row) const {
        std::string condition;
        for (const std::string& column : key) {
            condition += fmt::format("{}\"{}\" IS {}", condition.empty() ? "" : " AND ", column,
                                     row[Index(column)]);
        }
        return condition;
    }
};

// All tables of the file.
std::vector<Table> ReadTables(const std::string& database);

// One change of the database.
struct Change {
    std::string table;
    std::string column;  // empty: of a row as a whole
    std::string way;
    std::string before;  // what stood in the column
    std::string sql;

    std::string Text() const { return fmt::format("{}.{} {}: {}", table, column, way, sql); }
};

// All ways of changing one cell. Where another row is taken for it, `random` says which.
std::vector<Change> ChangesOf(const Table& table, const Row& row, const std::string& column,
                              std::mt19937_64& random);

}  // namespace tool

#endif
