#include "recorddb/sql/sqlite/sqlite_statement.h"

#include <sqlite3.h>

#include <charconv>
#include <string>

#include "recorddb/errors.h"
#include "recorddb/sql/sqlite/sqlite_error.h"

namespace recorddb::sql {

namespace {

// The number in a parameter's name such as "$12"; 0 for any other kind of parameter.
int ParameterNumber(const char* name) {
    if (name == nullptr || *name != '$') {
        return 0;
    }
    const std::string_view digits(name + 1);
    int number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return error == std::errc() && end == digits.data() + digits.size() ? number : 0;
}

}  // namespace

SqliteStatement::SqliteStatement(sqlite3* handle, std::string_view sql) : m_handle(handle) {
    // PERSISTENT, since nearly every statement is kept for the life of its connection.
    const int code = sqlite3_prepare_v3(handle, sql.data(), static_cast<int>(sql.size()),
                                        SQLITE_PREPARE_PERSISTENT, &m_statement, nullptr);
    CheckSqlite(handle, code, sql);
    if (m_statement == nullptr) {
        throw Error(ErrorKind::Other, "there is no statement in the text", std::string(sql));
    }
    try {
        ReadParameters(sql);
    } catch (...) {
        sqlite3_finalize(m_statement);
        throw;
    }
}

void SqliteStatement::ReadParameters(std::string_view sql) {
    const int count = sqlite3_bind_parameter_count(m_statement);
    m_indexes.assign(static_cast<std::size_t>(count), 0);
    for (int index = 1; index <= count; ++index) {
        const int number = ParameterNumber(sqlite3_bind_parameter_name(m_statement, index));
        if (number < 1 || number > count || m_indexes[static_cast<std::size_t>(number - 1)] != 0) {
            throw Error(ErrorKind::Other, "parameters must be $1, $2 ... without a gap",
                        std::string(sql));
        }
        m_indexes[static_cast<std::size_t>(number - 1)] = index;
    }
}

SqliteStatement::~SqliteStatement() {
    sqlite3_finalize(m_statement);
}

int SqliteStatement::IndexOf(int parameter) const {
    const auto position = static_cast<std::size_t>(parameter - 1);
    // SQLite refuses index 0 itself, so one check of its answer covers this as well.
    return position < m_indexes.size() ? m_indexes[position] : 0;
}

void SqliteStatement::Check(int code) const {
    if (code != SQLITE_OK) [[unlikely]] {
        throw SqliteError(m_handle, code, sqlite3_sql(m_statement));
    }
}

void SqliteStatement::Fail(int code) {
    // The error is read before the reset, which clears what the handle knows about it.
    const Error error = SqliteError(m_handle, code, sqlite3_sql(m_statement));
    Reset();
    throw error;
}

void SqliteStatement::BindInt(int parameter, std::int64_t value) {
    Check(sqlite3_bind_int64(m_statement, IndexOf(parameter), value));
}

void SqliteStatement::BindText(int parameter, std::string_view text) {
    // A null pointer would bind NULL, which is not the empty text.
    const char* data = text.data() != nullptr ? text.data() : "";
    Check(sqlite3_bind_text64(m_statement, IndexOf(parameter), data, text.size(), SQLITE_STATIC,
                              SQLITE_UTF8));
}

void SqliteStatement::BindBlob(int parameter, std::span<const std::byte> data) {
    const void* start = data.data() != nullptr ? static_cast<const void*>(data.data()) : "";
    Check(sqlite3_bind_blob64(m_statement, IndexOf(parameter), start, data.size(), SQLITE_STATIC));
}

void SqliteStatement::BindNull(int parameter) {
    Check(sqlite3_bind_null(m_statement, IndexOf(parameter)));
}

bool SqliteStatement::Step() {
    const int code = sqlite3_step(m_statement);
    if (code == SQLITE_ROW) {
        return true;
    }
    if (code != SQLITE_DONE) [[unlikely]] {
        Fail(code);
    }
    Reset();
    return false;
}

std::int64_t SqliteStatement::Execute() {
    int code = sqlite3_step(m_statement);
    while (code == SQLITE_ROW) {
        code = sqlite3_step(m_statement);
    }
    if (code != SQLITE_DONE) [[unlikely]] {
        Fail(code);
    }
    const std::int64_t changed =
        sqlite3_stmt_readonly(m_statement) != 0 ? 0 : sqlite3_changes64(m_handle);
    Reset();
    return changed;
}

void SqliteStatement::Reset() noexcept {
    sqlite3_reset(m_statement);
    // Borrowed text must not be left behind where a later execution could read it.
    sqlite3_clear_bindings(m_statement);
}

bool SqliteStatement::IsNull(int column) const {
    return sqlite3_column_type(m_statement, column) == SQLITE_NULL;
}

void SqliteStatement::CheckMemory() const {
    const int code = sqlite3_errcode(m_handle);
    Check(code == SQLITE_NOMEM ? code : SQLITE_OK);
}

std::int64_t SqliteStatement::Int(int column) const {
    return sqlite3_column_int64(m_statement, column);
}

std::string_view SqliteStatement::Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(m_statement, column));
    if (text == nullptr) {
        CheckMemory();
        return {};
    }
    return {text, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))};
}

std::span<const std::byte> SqliteStatement::Blob(int column) const {
    const auto* data = static_cast<const std::byte*>(sqlite3_column_blob(m_statement, column));
    if (data == nullptr) {
        CheckMemory();
        return {};
    }
    return {data, static_cast<std::size_t>(sqlite3_column_bytes(m_statement, column))};
}

int SqliteStatement::ColumnCount() const {
    return sqlite3_column_count(m_statement);
}

Storage SqliteStatement::StorageOf(int column) const {
    switch (sqlite3_column_type(m_statement, column)) {
        case SQLITE_INTEGER:
            return Storage::Integer;
        case SQLITE_FLOAT:
            return Storage::Real;
        case SQLITE_TEXT:
            return Storage::Text;
        case SQLITE_BLOB:
            return Storage::Blob;
        default:
            return Storage::Null;
    }
}

}  // namespace recorddb::sql
