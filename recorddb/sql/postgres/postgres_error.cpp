#include "recorddb/sql/postgres/postgres_error.h"

#include <libpq-fe.h>

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace recorddb::sql {

namespace {

// What the beginning of an SQLSTATE means to callers; longer ones stand before shorter ones.
constexpr std::pair<std::string_view, ErrorKind> kKinds[] = {
    {"23505", ErrorKind::UniqueViolation},
    {"23503", ErrorKind::ForeignKeyViolation},
    {"23", ErrorKind::ConstraintViolation},
    // Beyond what the engine can hold, such as a text too long for its index: a fault of the
    // record, like those above.
    {"54", ErrorKind::ConstraintViolation},
    {"40001", ErrorKind::Busy},
    {"40P01", ErrorKind::Busy},
    {"55P03", ErrorKind::Busy},
    {"53100", ErrorKind::DiskFull},
    {"58", ErrorKind::Io},
    {"25006", ErrorKind::ReadOnly},
    {"XX001", ErrorKind::Corrupt},
    {"XX002", ErrorKind::Corrupt},
    {"42501", ErrorKind::PermissionDenied},
    {"0A", ErrorKind::Unsupported},
    {"42883", ErrorKind::Unsupported},  // no such function
    {"57P", ErrorKind::ConnectionLost},
    {"08", ErrorKind::ConnectionLost},
    {"28", ErrorKind::CannotOpen},
    {"3D000", ErrorKind::CannotOpen},
    {"53300", ErrorKind::CannotOpen},
};

std::string_view FieldOf(const pg_result* result, int field) {
    const char* const text = result == nullptr ? nullptr : PQresultErrorField(result, field);
    return text == nullptr ? std::string_view() : text;
}

std::string_view WithoutBlanksAround(std::string_view text) {
    constexpr std::string_view blanks = " \t\r\n";
    const std::size_t begin = std::min(text.find_first_not_of(blanks), text.size());
    text.remove_prefix(begin);
    return text.substr(0, text.find_last_not_of(blanks) + 1);
}

// A name as the server writes it in SQL: in quotes where it needs them.
std::string Unquoted(std::string_view name) {
    if (!name.starts_with('"')) {
        return std::string(name);
    }
    std::string plain;
    for (std::size_t i = 1; i + 1 < name.size(); ++i) {
        plain += name[i];
        i += name[i] == '"' ? 1 : 0;
    }
    return plain;
}

std::string TextOf(pg_conn* connection, const pg_result* result) {
    std::string text(FieldOf(result, PG_DIAG_MESSAGE_PRIMARY));
    if (text.empty()) {
        text = WithoutBlanksAround(PQerrorMessage(connection));
    }
    if (const std::string_view detail = FieldOf(result, PG_DIAG_MESSAGE_DETAIL); !detail.empty()) {
        text += " (";
        text += detail;
        text += ')';
    }
    return text;
}

}  // namespace

ErrorKind KindOfSqlState(std::string_view state) {
    const auto* const found =
        std::find_if(std::begin(kKinds), std::end(kKinds),
                     [state](const auto& entry) { return state.starts_with(entry.first); });
    return found == std::end(kKinds) ? ErrorKind::Other : found->second;
}

std::vector<std::string> ColumnsOfDetail(std::string_view detail) {
    std::vector<std::string> columns;
    const std::size_t begin = detail.find('(');
    const std::size_t end = detail.find(")=(");
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin) {
        return columns;
    }
    std::string_view names = detail.substr(begin + 1, end - begin - 1);
    while (!names.empty()) {
        const std::size_t comma = names.find(", ");
        columns.push_back(Unquoted(names.substr(0, comma)));
        names.remove_prefix(comma == std::string_view::npos ? names.size() : comma + 2);
    }
    return columns;
}

Error PostgresError(pg_conn* connection, const pg_result* result, std::string_view sql) {
    const std::string_view state = FieldOf(result, PG_DIAG_SQLSTATE);
    ErrorKind kind = KindOfSqlState(state);
    // An answer without a code is libpq's own: it could not send, and what it knows of the
    // connection may lag behind.
    if (PQstatus(connection) == CONNECTION_BAD || (result != nullptr && state.empty())) {
        kind = ErrorKind::ConnectionLost;
    }
    std::vector<std::string> columns;
    if (kind == ErrorKind::UniqueViolation) {
        columns = ColumnsOfDetail(FieldOf(result, PG_DIAG_MESSAGE_DETAIL));
    } else if (const auto column = FieldOf(result, PG_DIAG_COLUMN_NAME); !column.empty()) {
        columns.emplace_back(column);
    }
    return {kind, TextOf(connection, result), std::string(sql), std::move(columns)};
}

}  // namespace recorddb::sql
