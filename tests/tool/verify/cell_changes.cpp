#include "verify/cell_changes.h"

#include <cctype>

#include "recorddb/sql.h"

namespace tool {

namespace {

std::vector<Row> Select(recorddb::sql::Connection& connection, const std::string& sql) {
    const auto statement = connection.PrepareOwn(sql);
    std::vector<Row> rows;
    while (statement->Step()) {
        Row& row = rows.emplace_back();
        for (int column = 0; column < statement->ColumnCount(); ++column) {
            row.emplace_back(statement->Text(column));
        }
    }
    return rows;
}

bool IsNumber(const std::string& literal) {
    return literal.front() == '-' || std::isdigit(static_cast<unsigned char>(literal.front())) != 0;
}

bool IsText(const std::string& literal) {
    return literal.front() == '\'';
}

bool IsBlob(const std::string& literal) {
    return literal.starts_with("X'");
}

// The literal a step further: a number plus one, a text with the next last character, a blob with
// one more byte.
std::string OneMore(const std::string& literal) {
    if (IsNumber(literal)) {
        return literal + " + 1";
    }
    if (IsText(literal)) {
        return fmt::format("substr({0}, 1, length({0}) - 1) || char(unicode(substr({0}, -1)) + 1)",
                           literal);
    }
    return IsBlob(literal) ? literal.substr(0, literal.size() - 1) + "00'" : "1";
}

std::string OfAnotherType(const std::string& literal) {
    if (IsNumber(literal)) {
        return fmt::format("'{}x'", literal);
    }
    return IsText(literal) ? fmt::format("CAST({} AS BLOB)", literal)
                           : fmt::format("CAST({} AS TEXT)", IsBlob(literal) ? literal : "'7'");
}

std::string Another(const std::string& literal) {
    if (IsNumber(literal)) {
        return literal + " + 1000";
    }
    return IsText(literal) ? literal + " || 'x'" : "'x'";
}

std::string UpdateOf(const Table& table, const Row& row, const std::string& column,
                     const std::string& value) {
    return fmt::format("UPDATE \"{}\" SET \"{}\" = {} WHERE {};", table.name, column, value,
                       table.Where(row));
}

// Exchanges two values, by way of one that stands nowhere else.
std::string SwapOf(const Table& table, Row row, const Row& other, const std::string& column) {
    const std::size_t index = table.Index(column);
    const std::string between = IsNumber(row[index]) ? "-999983" : "'a value between'";
    const std::string first = UpdateOf(table, row, column, between);
    const std::string value = row[index];
    row[index] = between;
    return first + UpdateOf(table, other, column, value) +
           UpdateOf(table, row, column, other[index]);
}

}  // namespace

std::vector<Table> ReadTables(const std::string& database) {
    const auto connection = recorddb::sql::Open(database, recorddb::sql::OpenMode::ReadOnly);
    std::vector<Table> tables;
    for (const Row& name : Select(*connection,
                                  "SELECT name FROM sqlite_master WHERE type = 'table' "
                                  "AND name NOT LIKE 'sqlite_%' ORDER BY name")) {
        Table& table = tables.emplace_back();
        table.name = name.front();
        std::string quoted;
        for (const Row& column :
             Select(*connection,
                    fmt::format("SELECT name, pk FROM pragma_table_info('{}')", table.name))) {
            table.columns.push_back(column[0]);
            if (column[1] != "0") {
                table.key.push_back(column[0]);
            }
            quoted += fmt::format("{}quote(\"{}\")", quoted.empty() ? "" : ", ", column[0]);
        }
        if (table.key.empty()) {
            table.key = table.columns;
        }
        table.rows = Select(*connection, fmt::format("SELECT {} FROM \"{}\"", quoted, table.name));
    }
    return tables;
}

std::vector<Change> ChangesOf(const Table& table, const Row& row, const std::string& column,
                              std::mt19937_64& random) {
    const std::size_t index = table.Index(column);
    const std::string& before = row[index];
    std::vector<Change> changes;
    const auto set = [&](const char* way, const std::string& value) {
        if (value != before) {
            changes.push_back(
                {table.name, column, way, before, UpdateOf(table, row, column, value)});
        }
    };
    set("becomes NULL", "NULL");
    set("becomes empty", "''");
    set("gets another type", OfAnotherType(before));
    set("gets another value", Another(before));
    set("becomes one more", OneMore(before));
    if (IsNumber(before)) {
        set("becomes one less", before + " - 1");
    }
    std::vector<const Row*> others;
    for (const Row& other : table.rows) {
        if (other[index] != before) {
            others.push_back(&other);
        }
    }
    if (!others.empty()) {
        const Row& other = *others[random() % others.size()];
        set("gets the value of another row", other[index]);
        changes.push_back({table.name, column, "is swapped with another row", before,
                           SwapOf(table, row, other, column)});
    }
    return changes;
}

}  // namespace tool
