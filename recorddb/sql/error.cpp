#include <utility>

#include "recorddb/errors.h"

namespace recorddb::sql {

namespace {

// Enough of a statement to know it by. What makes the tables of a schema has thousands of lines.
constexpr std::size_t kLongestShown = 300;

std::string FullText(ErrorKind kind, const std::string& driverText, const std::string& sql) {
    std::string text = "database error (";
    text += KindName(kind);
    text += "): ";
    text += driverText;
    if (!sql.empty()) {
        text += " [";
        text += sql.substr(0, kLongestShown);
        text += sql.size() > kLongestShown ? " ...]" : "]";
    }
    return text;
}

}  // namespace

std::string_view KindName(ErrorKind kind) {
    switch (kind) {
        case ErrorKind::UniqueViolation:
            return "unique violation";
        case ErrorKind::ForeignKeyViolation:
            return "foreign key violation";
        case ErrorKind::ConstraintViolation:
            return "constraint violation";
        case ErrorKind::Conflict:
            return "conflict";
        case ErrorKind::Busy:
            return "busy";
        case ErrorKind::DiskFull:
            return "disk full";
        case ErrorKind::Io:
            return "input/output";
        case ErrorKind::ReadOnly:
            return "read-only";
        case ErrorKind::Corrupt:
            return "corrupt";
        case ErrorKind::NotADatabase:
            return "not a database";
        case ErrorKind::CannotOpen:
            return "cannot open";
        case ErrorKind::PermissionDenied:
            return "permission denied";
        case ErrorKind::ConnectionLost:
            return "connection lost";
        case ErrorKind::Unsupported:
            return "unsupported";
        case ErrorKind::Other:
            break;
    }
    return "other";
}

Error::Error(ErrorKind kind, std::string driverText, std::string sql,
             std::vector<std::string> columns)
    : std::runtime_error(FullText(kind, driverText, sql)),
      m_kind(kind),
      m_driverText(std::move(driverText)),
      m_sql(std::move(sql)),
      m_columns(std::move(columns)) {}

bool Error::IsConstraint() const {
    return m_kind == ErrorKind::UniqueViolation || m_kind == ErrorKind::ForeignKeyViolation ||
           m_kind == ErrorKind::ConstraintViolation;
}

}  // namespace recorddb::sql
