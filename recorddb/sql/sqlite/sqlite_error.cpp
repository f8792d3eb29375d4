#include "recorddb/sql/sqlite/sqlite_error.h"

#include <sqlite3.h>

#include <utility>
#include <vector>

namespace recorddb::sql {

namespace {

ErrorKind KindOfConstraint(int code) {
    switch (code) {
        case SQLITE_CONSTRAINT_UNIQUE:
        case SQLITE_CONSTRAINT_PRIMARYKEY:
        case SQLITE_CONSTRAINT_ROWID:
            return ErrorKind::UniqueViolation;
        case SQLITE_CONSTRAINT_FOREIGNKEY:
            return ErrorKind::ForeignKeyViolation;
        default:
            return ErrorKind::ConstraintViolation;
    }
}

ErrorKind KindOf(int code) {
    switch (code & 0xFF) {
        case SQLITE_CONSTRAINT:
            return KindOfConstraint(code);
        case SQLITE_BUSY:
        case SQLITE_LOCKED:
            return ErrorKind::Busy;
        case SQLITE_FULL:
            return ErrorKind::DiskFull;
        case SQLITE_IOERR:
            return ErrorKind::Io;
        case SQLITE_READONLY:
            return ErrorKind::ReadOnly;
        case SQLITE_CORRUPT:
            return ErrorKind::Corrupt;
        case SQLITE_NOTADB:
            return ErrorKind::NotADatabase;
        case SQLITE_CANTOPEN:
        case SQLITE_PERM:
            return ErrorKind::CannotOpen;
        default:
            return ErrorKind::Other;
    }
}

// Takes the columns out of texts such as "UNIQUE constraint failed: bug.source_id, bug.title",
// which is the only place where SQLite tells them.
std::vector<std::string> ColumnsIn(std::string_view text) {
    std::vector<std::string> columns;
    constexpr std::string_view marker = "constraint failed: ";
    const std::size_t found = text.find(marker);
    if (found == std::string_view::npos) {
        return columns;
    }
    text.remove_prefix(found + marker.size());
    while (!text.empty()) {
        const std::size_t comma = text.find(", ");
        const std::string_view part = text.substr(0, comma);
        if (const std::size_t dot = part.find('.'); dot != std::string_view::npos) {
            columns.emplace_back(part.substr(dot + 1));
        }
        text.remove_prefix(comma == std::string_view::npos ? text.size() : comma + 2);
    }
    return columns;
}

}  // namespace

Error SqliteError(sqlite3* handle, int code, std::string_view sql) {
    std::string text = handle != nullptr ? sqlite3_errmsg(handle) : sqlite3_errstr(code);
    const ErrorKind kind = KindOf(code);
    if (kind == ErrorKind::NotADatabase) {
        text = "the file is not an SQLite database";
    }
    std::vector<std::string> columns;
    if (kind == ErrorKind::UniqueViolation || kind == ErrorKind::ConstraintViolation) {
        columns = ColumnsIn(text);
    }
    return {kind, std::move(text), std::string(sql), std::move(columns)};
}

void CheckSqlite(sqlite3* handle, int code, std::string_view sql) {
    if (code != SQLITE_OK) {
        throw SqliteError(handle, code, sql);
    }
}

}  // namespace recorddb::sql
